// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>

#include "common/CHandle.h"

// What tvctl makes of logs: of real ones, so that a changed message breaks a test, and of others.

namespace {

using testing::HasSubstr;

std::string ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class Trace : public testing::Test {
protected:
    ~Trace() override { Run("rm -r $PWD"); }

    // Runs a shell's command in a folder of its own; its status.
    int Run(const std::string& command) {
        const std::string line = "cd " + m_folder + " && PATH=" BIN_DIR ":$PATH && " + command;
        return WEXITSTATUS(std::system(line.c_str()));
    }
    // The timelines of `log`, whose picture must be well-formed.
    std::string TimelineOf(const std::string& log) {
        std::ofstream(m_folder + "/log", std::ios::binary) << log;
        EXPECT_EQ(Run("tvctl trace - --svg svg <log >out 2>&1 && tvctl trace log --json >json"), 0);
        const std::string svg = ReadFile(m_folder + "/svg");
        const GMarkupParser parser = {};
        const CPtr<GMarkupParseContext, g_markup_parse_context_free> context(
            g_markup_parse_context_new(&parser, {}, nullptr, nullptr));
        const auto size = static_cast<gssize>(svg.size());
        EXPECT_TRUE(g_markup_parse_context_parse(context.get(), svg.data(), size, nullptr) &&
                    g_markup_parse_context_end_parse(context.get(), nullptr));
        EXPECT_EQ(svg.find_first_of("\x01\x1b"), std::string::npos);
        return ReadFile(m_folder + "/out");
    }

    std::string m_folder = GStringPtr(g_dir_make_tmp("trace-XXXXXX", nullptr)).get();
};

// A scenario, and the texts that come in this order between stars, times and addresses cut.
struct Story {
    const char* scenario;
    const char* texts;
};
std::ostream& operator<<(std::ostream& out, const Story& story) {
    return out << story.scenario;
}
class TraceOf : public Trace, public testing::WithParamInterface<Story> {};

TEST_P(TraceOf, ARealRunTellsItsStory) {
    const std::string file = SCENARIO_DIR "/" + std::string(GetParam().scenario) + ".ini";
    ASSERT_EQ(Run("scenario-runner --colour always " + file + " 2>real >told"), 0);
    TimelineOf(ReadFile(m_folder + "/real"));
    Run("sed -E 's/^ +[0-9.]+ +//; s/[0-9.]+ s/N s/; s/A0:11:22:33:44:0//g' <out >plain");
    const std::string plain = ReadFile(m_folder + "/plain");
    EXPECT_TRUE(g_pattern_match_simple(GetParam().texts, plain.c_str())) << plain;
}

const Story kStories[] = {
    {"fallback",
     "*: 3 was connected and told to play\nwindow    opens\nscan      starts for 1, 2, "
     "3\nscan      ended by its timer after N s, no registered phone heard\n"
     "connect   1 not tried, it is not bonded\nconnect   2 is tried\nconnect   2 failed "
     "after N s: the phone does not answer, it is off or out of reach (org.bluez.Error.Failed: "
     "br-connection-page-timeout); TIMED_OUT (*\n"
     "connect   3 connected after N s\nplayback  play command sent\n*"},
    {"crowd", "*heard     * too short to *heard     1, which is registered\n*ended by a match *"},
    {"silent-daemon", "*scan      failed: no success within N s\n*"},
    {"nobody-home", "*: no phone was connected in 2 attempts\n*no more registered phone to try\n*"},
    {"leaves-early", "*not told to play: the phone had left\n*connect   1 is lost\n*"},
    {"already-playing", "*: 1 was connected and plays already\n*"},
    {"no-player", "*playback  play command not sent: the phone shows no player\n*"},
    {"late-player", "*not sent: the phone's player has not told its state\n*"},
    {"adapter-off", "*: no attempt: Bluetooth is off: no adapter has power\nwindow    opens\n*"},
    {"not-zemi", "*: no attempt: the product is not a rotating TV\n*"},
    {"not-ambient", "*: no attempt: the ambient picture does not show (mode 0)\n*"},
    {"blocked", "*: no attempt: the key memory/bluetooth_nirvoui/musictvfail forbids it\n*"},
    {"wrong-wakeup-reason", "*: no attempt: the wake-up reason forbids it\n*"},
    {"setting-off", "*: no attempt: no registered phone qualifies\n*"}};
INSTANTIATE_TEST_SUITE_P(, TraceOf, testing::ValuesIn(kStories), [](const auto& story) {
    std::string name = story.param.scenario;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
});

// A is tried after a second and connected in two; @ in the lines' front is the time of day.
std::string LogWith(const std::string& front) {
    std::string log;
    for (const std::string text :
         {"1AutoConnectApp.cpp: OnPrePareAndDoAutoConnect(1) > +",
          "2BTAutoConnect.cpp: ConnectToDevice(2) > Try to connect A",
          "4BTAutoConnect.cpp: OnAudioSinkConnected(3) > result : 0, address : A"}) {
        for (const char c : front) {
            log += c == '@' ? "07:00:0" + text.substr(0, 1) : std::string(1, c);
        }
        log += text.substr(1) + "\n";
    }
    return log;
}

TEST_F(Trace, TakesEveryFormOfTheLogAndWhateverElseIsInIt) {
    const std::string own = LogWith("2026-11-21 @.000 I BT_AUTO_CONNECT: ");
    const std::string noise = std::string(3 << 20, 'x') + "\n\x80" + std::string(9, '\0') + "\r\n";
    for (const std::string& log :
         {own, noise + own, LogWith("Nov 21 @ tv BT_AUTO_CONNECT[7]: "),
          LogWith("Nov  1 @.000001 tv BT_AUTO_CONNECT[7]: "),
          LogWith("2026-11-21T@+0100 tv BT_AUTO_CONNECT[7]: "),
          LogWith("2026-11-21T@.000001+01:00 tv BT_AUTO_CONNECT: "),
          LogWith("Nov 21 00:00:00 tv bt[7]: 2026-11-21 @.000 I BT_AUTO_CONNECT: ")}) {
        EXPECT_THAT(TimelineOf(log), HasSubstr("   3.000  connect   A connected after 2.00 s\n"));
    }
    const std::string start = own.substr(0, own.find("2026", 1));
    std::string late = own + own.substr(own.rfind("2026"));
    late.replace(late.find("result : 0"), 10, "result : -1");
    EXPECT_THAT(TimelineOf(late), HasSubstr("A was connected; the log has no playback check\n"));
    const std::string odd =
        "2026-11-20 07:00:01.000 I BT_AUTO_CONNECT: BTAutoConnect.cpp: Connect"
        "ToDevice(2) > Try to connect x\"'<&>]]>\xff\xC3\x01\x1b[7m\x7f\xE2\x80\xAE";
    EXPECT_THAT(TimelineOf(start + start + odd), HasSubstr("x\"'<&>]]>"));
    EXPECT_THAT(TimelineOf(own.substr(0, own.size() - 20)), HasSubstr("end is not in the log"));
    for (const char* what :
         {"/dev/null", ".", "none", "log --svg none/svg", "log --svg /dev/full"}) {
        EXPECT_EQ(Run(std::string("tvctl trace ") + what + " >out 2>&1"), 1) << what;
    }
    EXPECT_EQ(Run("tvctl=$(command -v tvctl) && PATH=none $tvctl trace 2>out"), 1);
    EXPECT_THAT(ReadFile(m_folder + "/out"), HasSubstr("tvctl: journalctl cannot be started"));
}

}  // namespace
