// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <glib.h>

#include <memory>
#include <utility>

// A timeout on the thread's default main context; it is cancelled when its owner drops or replaces
// it, and it may be dropped or replaced from within its own action.
class Timer {
public:
    Timer() = default;

    // Runs `action` once after `ms` (0 or more) milliseconds.
    template <typename Action>
    [[nodiscard]] static Timer Once(int ms, Action action) {
        return Timer(ms, std::move(action), [](gpointer data) noexcept -> gboolean {
            (*static_cast<Action*>(data))();
            return G_SOURCE_REMOVE;
        });
    }

    // Runs `action` every `ms` (1 or more) milliseconds until the timer is dropped.
    template <typename Action>
    [[nodiscard]] static Timer Every(int ms, Action action) {
        return Timer(ms, std::move(action), [](gpointer data) noexcept -> gboolean {
            (*static_cast<Action*>(data))();
            return G_SOURCE_CONTINUE;
        });
    }

    void Cancel() { m_source.reset(); }
    // Whether the action is still to run; also true within the action of a timer that runs once.
    [[nodiscard]] bool IsRunning() const { return m_source != nullptr; }

private:
    struct Destroy {
        void operator()(GSource* source) const noexcept {
            g_source_destroy(source);
            g_source_unref(source);
        }
    };

    template <typename Action>
    Timer(int ms, Action action, GSourceFunc run)
        : m_source(g_timeout_source_new(static_cast<guint>(ms))) {
        // The source holds the action while it runs, so the action may destroy this timer.
        g_source_set_callback(m_source.get(), run, new Action(std::move(action)),
                              [](gpointer data) noexcept { delete static_cast<Action*>(data); });
        g_source_attach(m_source.get(), g_main_context_get_thread_default());
    }

    std::unique_ptr<GSource, Destroy> m_source;
};
