// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <glib-unix.h>

#include <memory>
#include <utility>

// Something that the thread's default main context waits for. It is cancelled when its owner drops
// or replaces it, which its own action may do too.
class Source {
public:
    Source() = default;

    // Runs `action` whenever the file descriptor, which must stay open, can be read.
    template <typename Action>
    [[nodiscard]] static Source OnReadable(int fd, Action action) {
        constexpr GUnixFDSourceFunc kRun = [](gint, GIOCondition, gpointer data) noexcept {
            return Run<Action, true>(data);
        };
        return Source(g_unix_fd_source_new(fd, G_IO_IN), std::move(action), G_SOURCE_FUNC(kRun));
    }

    // Runs `action` for each signal (SIGHUP, SIGINT, SIGTERM, SIGUSR1, SIGUSR2) that the process
    // gets.
    template <typename Action>
    [[nodiscard]] static Source OnSignal(int signal, Action action) {
        return Source(g_unix_signal_source_new(signal), std::move(action), Run<Action, true>);
    }

    void Cancel() { m_source.reset(); }
    // Whether the action is still to run; also true within the action of a timer that runs once.
    [[nodiscard]] bool IsRunning() const { return m_source != nullptr; }

protected:
    template <typename Action, bool again>
    static gboolean Run(gpointer data) noexcept {
        (*static_cast<Action*>(data))();
        return again ? G_SOURCE_CONTINUE : G_SOURCE_REMOVE;
    }

    // Takes `source` over.
    template <typename Action>
    Source(GSource* source, Action action, GSourceFunc run) : m_source(source) {
        // The source holds the action while it runs, so the action may destroy this owner.
        g_source_set_callback(source, run, new Action(std::move(action)),
                              [](gpointer data) noexcept { delete static_cast<Action*>(data); });
        g_source_attach(source, g_main_context_get_thread_default());
    }

private:
    struct Destroy {
        void operator()(GSource* source) const noexcept {
            g_source_destroy(source);
            g_source_unref(source);
        }
    };

    std::unique_ptr<GSource, Destroy> m_source;
};

// A source that becomes due when its time is over.
class Timer : public Source {
public:
    Timer() = default;

    // Runs `action` once after `ms` (0 or more) milliseconds.
    template <typename Action>
    [[nodiscard]] static Timer Once(int ms, Action action) {
        return Timer(ms, std::move(action), Run<Action, false>);
    }

    // Runs `action` every `ms` (1 or more) milliseconds until the timer is dropped.
    template <typename Action>
    [[nodiscard]] static Timer Every(int ms, Action action) {
        return Timer(ms, std::move(action), Run<Action, true>);
    }

private:
    template <typename Action>
    Timer(int ms, Action action, GSourceFunc run)
        : Source(g_timeout_source_new(static_cast<guint>(ms)), std::move(action), run) {}
};
