// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

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
        const std::string line =
            "cd " + m_folder + " && export TZ=UTC PATH=" BIN_DIR ":$PATH && " + command;
        return WEXITSTATUS(std::system(line.c_str()));
    }
    void Write(const std::string& name, const std::string& content) {
        std::ofstream(m_folder + "/" + name, std::ios::binary) << content;
    }
    // The timelines of `log`, whose picture must be well-formed.
    std::string TimelineOf(const std::string& log) {
        Write("log", log);
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
    ASSERT_EQ(Run("scenario-runner --log --colour always " + file + " 2>real >told"), 0);
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
INSTANTIATE_TEST_SUITE_P(, TraceOf, testing::ValuesIn(kStories));

// A is tried after a second and connected in two. In a line's form, @ is the second, % the message.
std::string LogIn(const std::string& form) {
    std::string log;
    for (const std::string text :
         {"1AutoConnectApp.cpp: OnPrePareAndDoAutoConnect(1) > +",
          "2BTAutoConnect.cpp: ConnectToDevice(2) > Try to connect A",
          "4BTAutoConnect.cpp: OnAudioSinkConnected(3) > result : 0, address : A"}) {
        for (const char c : form) {
            log += c == '@' ? text.substr(0, 1) : c == '%' ? text.substr(1) : std::string(1, c);
        }
    }
    return log;
}

constexpr const char* kOwnForm = "2026-11-21 07:00:0@.000 I BT_AUTO_CONNECT: %\n";

TEST_F(Trace, TakesEveryFormOfTheLogAndWhateverElseIsInIt) {
    const std::string own = LogIn(kOwnForm);
    const std::string told = TimelineOf(own);
    EXPECT_THAT(told, HasSubstr("   3.000  connect   A connected after 2.00 s\n"));
    for (const char* entry :
         {R"("_SOURCE_REALTIME_TIMESTAMP":"179524440@000000","__REALTIME_TIMESTAMP":"7",)"
          R"("SYSLOG_IDENTIFIER":"BT_AUTO_CONNECT","MESSAGE":"%")",
          R"("MESSAGE":"2026-11-21 07:00:0@.000 I BT_AUTO_CONNECT: %")"}) {
        EXPECT_EQ(TimelineOf(LogIn("{" + std::string(entry) + "}\n")), told) << entry;
    }
    Write("tv", LogIn("11-21 07:00:0@.000+0900 I/BT_AUTO_CONNECT( 7): %\n"));
    EXPECT_EQ(Run(R"(tvctl trace tv --pattern '^(?<time>.{18})\S* ./(?<tag>\w+).*?: (?<text>.*)')"
                  R"( | sed '1s/, /, 2026-/' >out)"),
              0);
    EXPECT_EQ(ReadFile(m_folder + "/out"), told);
    EXPECT_EQ(Run("tvctl trace --follow - <log >out"), 0);
    EXPECT_THAT(ReadFile(m_folder + "/out"), HasSubstr("   1.000  connect   A is tried\n"));
    EXPECT_THAT(ReadFile(m_folder + "/out"), HasSubstr("\n=> A was connected; the log has no "));
    const char* const inBytes = R"({"__REALTIME_TIMESTAMP":"1","SYSLOG_IDENTIFIER":"TV_PLATFORM",)"
                                R"("MESSAGE":[97,100,97,112,116,101,114,32,27,91,64,255]})";
    EXPECT_THAT(TimelineOf(own + inBytes), HasSubstr(" remark    adapter \uFFFD\n"));
    const char* const inFields =
        R"({"__REALTIME_TIMESTAMP":"1795244409000000","SYSLOG_IDENTIFIER":"BT_AUTO_CONNECT",)"
        R"("MESSAGE":"A went","MESSAGE_ID":"acf403dccfd4417db1181ec2611e5644","BT_RESULT":"0",)"
        R"("BT_ADDRESS":"A","CODE_FILE":"BTAutoConnect.cpp","CODE_FUNC":"OnAudioSinkDisconnected"})";
    EXPECT_THAT(TimelineOf(own + inFields), HasSubstr("   8.000  connect   A is lost\n"));
    const std::string noise = std::string(3 << 20, 'x') + "\n\x80" + std::string(9, '\0') + "\r\n";
    EXPECT_EQ(TimelineOf(noise + own), told + "not of the service, left out: 2 lines\n");
    const std::string start = own.substr(0, own.find("2026", 1));
    std::string late = own + own.substr(own.rfind("2026"));
    late.replace(late.find("result : 0"), 10, "result : -1");
    EXPECT_THAT(TimelineOf(late), HasSubstr("A was connected; the log has no playback check\n"));
    const std::string odd =
        "2026-11-20 07:00:01.000 I BT_AUTO_CONNECT: BTAutoConnect.cpp: Connect"
        "ToDevice(2) > Try to connect x\"'<&>]]>\xff\xC3\x01\x1b[7m\x7f\xE2\x80\xAE";
    EXPECT_THAT(TimelineOf(start + start + odd), HasSubstr("x\"'<&>]]>"));
    EXPECT_THAT(TimelineOf(own.substr(0, own.size() - 20)), HasSubstr("end is not in the log"));
}

TEST_F(Trace, ReadsTheServicesEntriesOfAJournal) {
    const std::string entry =
        "__REALTIME_TIMESTAMP=179524440@000000\n_BOOT_ID=0123456789abcdef0123456789abcdef\n"
        "SYSLOG_IDENTIFIER=BT_AUTO_CONNECT\nMESSAGE=%\n_SYSTEMD_UNIT=";
    const std::string own = entry + "bt-autoconnect.service\n";
    Write("entries", LogIn(own + "\n" + entry + "another.service\n\n"));
    Write("fleet", LogIn(own + "_MACHINE_ID=1\n\n" + own + "_HOSTNAME=two\n\n"));
    ASSERT_EQ(Run("/lib/systemd/systemd-journal-remote -o a.journal entries 2>remote"), 0)
        << ReadFile(m_folder + "/remote");
    const std::string told = TimelineOf(LogIn(kOwnForm));
    for (const char* journal : {"--file a.journal", "--directory ."}) {
        EXPECT_EQ(Run(std::string("tvctl trace >out ") + journal), 0);
        EXPECT_EQ(ReadFile(m_folder + "/out"), told) << journal;
    }
    EXPECT_EQ(Run("/lib/systemd/systemd-journal-remote -o fleet.journal fleet 2>remote && tvctl "
                  "trace --file fleet.journal >out && ! grep remark out && "
                  "tvctl trace --file fleet.journal --summary >out"),
              0);
    EXPECT_THAT(ReadFile(m_folder + "/out"),
                testing::AllOf(HasSubstr("2 wake-ups of 2 boxes"),
                               HasSubstr("2  100.0 %  a phone was connected, no music"),
                               HasSubstr("A                       2         2       0")));
}

TEST_F(Trace, SaysInOneLineWhatItCannotRead) {
    Write("log", LogIn(kOwnForm));
    Write("cut", LogIn(R"({"__REALTIME_TIMESTAMP":"7","MESSAGE":"%)"
                       "\n") +
                     R"({"a":)" + std::string(50000, '[') + "\n{\"MESSAGE\":7}");
    const std::pair<const char*, const char*> kCases[] = {
        {"cut", "no wake-up in cut: 0 lines of the service, 5 of another kind"},
        {".", ".: Is a directory"},
        {"none", "none: No such file or directory"},
        {"log --svg none/svg", "none/svg: No such file or directory"},
        {"log --svg /dev/full", "/dev/full: No space left on device"},
        {"log --pattern .", "the pattern is wrong: it has no group (?<text>...)"},
        {"--file log", "log cannot be read as a journal: Bad message"},
        {"--directory none", "none cannot be read as a journal: No such file or directory"}};
    for (const auto& [what, message] : kCases) {
        EXPECT_EQ(Run(std::string("tvctl trace 2>out >told ") + what), 1) << what;
        EXPECT_EQ(ReadFile(m_folder + "/out"), "tvctl: " + std::string(message) + "\n");
    }
    EXPECT_EQ(Run("tvctl trace log --file a.journal 2>out"), 2);
}

}  // namespace
