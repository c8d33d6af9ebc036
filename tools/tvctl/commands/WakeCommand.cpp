// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "autoconnect/src/DbusInterface.h"
#include "common/Parse.h"
#include "common/Source.h"
#include "platform/linux/bluez/Inspection.h"
#include "tools/tvctl/commands/Commands.h"
#include "tools/tvctl/commands/WakeAttempt.h"
#include "tools/tvctl/model/ServiceSignal.h"
#include "utility/JsonUtil.h"

namespace Tvctl {

namespace {

constexpr int kLongestRetryS = 600;
// The service learns of the adapter on its own, and a stick that is being set up may go once more.
constexpr int kSettleMs = 500;

bool HasAdapter() {
    return !Bluez::PoweredAdapter().path.empty();
}

ExitCode SendWakeUp(Console& console) {
    const std::string failure = SendToService(kPrepareCommand, nullptr);
    return failure.empty() ? console.Show(Util::Object({{"signal", kPrepareCommand}}),
                                          {"the service heard that the TV woke up"})
                           : console.Fail(failure);
}

// Sends the wake-up each time that an adapter becomes ready within the time.
class Retry {
public:
    Retry(int seconds, Console& console)
        : m_console(console),
          m_wasReady(HasAdapter()),
          m_end(Timer::Once(seconds * 1000, [this] { m_isOver = true; })) {}

    ExitCode Run() {
        while (!m_isOver && m_result == kDone) {
            g_main_context_iteration(nullptr, TRUE);
            Look();
        }
        if (m_result == kDone && !HasAdapter()) {
            return m_console.Fail("no Bluetooth adapter was ready in time");
        }
        return m_result == kDone && m_isDue ? SendWakeUp(m_console) : m_result;
    }

private:
    void Look() {
        const bool isReady = HasAdapter();
        if (isReady && !m_wasReady) {
            m_isDue = true;
            m_settled = Timer::Once(kSettleMs, [this] {
                m_isDue = false;
                m_result = SendWakeUp(m_console);
            });
        } else if (!isReady) {
            m_isDue = false;
            m_settled.Cancel();
        }
        m_wasReady = isReady;
    }

    Console& m_console;
    bool m_wasReady;
    bool m_isOver = false;
    bool m_isDue = false;  // an adapter became ready and the signal was not sent yet
    ExitCode m_result = kDone;
    Timer m_settled;
    Timer m_end;
};

// Where the service's log is: this boot's journal, if no file is named.
LogSource LogOf(const Arguments& arguments) {
    LogSource source;
    source.boot = "0";
    source.pattern = arguments.Option("--pattern").value_or("");
    if (const auto file = arguments.Option("--log")) {
        source.kind = LogSource::Kind::kText;
        source.path = *file;
    }
    return source;
}

ExitCode Wake(const Arguments& arguments, Console& console) {
    if (arguments.Has("--wait") && !arguments.Has("--retry")) {
        return WakeAndWait(LogOf(arguments), console);
    }
    if (arguments.Has("--wait") || arguments.Has("--log") || arguments.Has("--pattern")) {
        return console.Misuse("--log and --pattern belong to --wait, which excludes --retry");
    }
    if (!arguments.Has("--retry")) {
        return SendWakeUp(console);
    }
    const auto seconds = ParseInt(arguments.Option("--retry").value_or(""));
    if (!seconds || *seconds < 1 || *seconds > kLongestRetryS) {
        return console.Misuse("--retry needs a number of seconds, 1 to 600");
    }
    // The service asks bluetoothd as soon as it runs and is answered first, so when this process
    // knows the adapter, a service that was just started does too.
    static_cast<void>(Bluez::AwaitAdapter());
    const ExitCode first = SendWakeUp(console);
    return first == kDone ? Retry(*seconds, console).Run() : first;
}

}  // namespace

CommandGroup WakeCommands() {
    return {
        "wake",
        "tell the service that the TV woke up",
        {{"",
          "[--wait [--log FILE] [--pattern REGEX] | --retry SECONDS]",
          "Sends the signal that the TV sends when it wakes up",
          Wake,
          "The service then looks for a registered phone, connects it and makes it play.\n"
          "Fails if the service does not run or does not answer. With --retry the command runs\n"
          "for that time and sends the signal again whenever a Bluetooth adapter becomes ready,\n"
          "which may be some seconds after a resume. It then fails if none is ready at the end.\n"
          "With --wait it shows what the service's log tells, and fails if no phone plays.\n",
          {{"--wait", "", "show the attempt as it happens, until it is over"},
           {"--log", "FILE", "the service's standard error, if it does not go to the journal"},
           {"--pattern", "REGEX", "FILE is another logger's; see tvctl trace --help"},
           {"--retry", "SECONDS", "1 to 600"}}}}};
}

}  // namespace Tvctl
