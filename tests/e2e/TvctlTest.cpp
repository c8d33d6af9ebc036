// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "platform/database.h"
#include "tests/e2e/Bench.h"

// What an engineer asks and changes with tvctl, with the real files and the simulated adapter.

namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;

// The device N has the address A0:00:00:00:00:0N.
struct KnownDevice {
    const char* name;
    const char* keys;  // of its section in the scenario
    const char* kind;
};
constexpr KnownDevice kDevices[] = {
    {"Velmora Wireless Keyboard", "class=0x002580", "1 KeyBoard"},
    {"Mouse", "class=0x002580\nconnects-by-itself-after-ms=1", "2 Mouse"},
    {"Pad", "class=0x002508", "3 GamePad"},
    {"Remote", "class=0x00250C\nmodalias=usb:v04E8p2075d0100", "4 Remocon"},
    {"Cans", "class=0x240418", "5 HeadPhone"},
    {"[Velmora] Bar", "class=0x240414", "6 Soundbar"},
    {"[AV] Bar", "class=0x240414\nmodalias=bluetooth:v04E8p9000d0100", "7 Soundbar"},
    {"Phone", "class=0x5A020C", "0 Mobile"},
    {"Printer", "class=0x040680", "0 UNKNOWN_DEV_TYPE"}};
constexpr const char* kAddresses = "A0:00:00:00:00:0";
constexpr const char* kBar = "A0:00:00:00:00:07";

void Sql(const SqlitePtr& connection, const std::string& sql) {
    EXPECT_EQ(sqlite3_exec(connection.get(), sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
        << sqlite3_errmsg(connection.get());
}

class Devices : public Bench {
protected:
    void SimulateDevices(const std::string& keys = "") {
        std::ostringstream scenario("[phone Stranger]\naddress=A0:00:00:00:00:0A\nbonded=false\n",
                                    std::ios::ate);
        int number = 0;
        for (const KnownDevice& device : kDevices) {
            ++number;
            scenario << "[phone " << number << "]\naddress=" << kAddresses << number
                     << "\nname=" << device.name << "\n"
                     << keys << device.keys << "\n";
        }
        StartSimulator(scenario.str());
    }
    [[nodiscard]] std::string Database() const {
        return Root() + "/opt/usr/home/owner/apps_rw/org.orlix.nirvo/data/BT_Connection_record.db";
    }
};

TEST_F(Devices, AreListedEachWithItsKind) {
    EXPECT_THAT(TvctlFailure({"device", "list"}), HasSubstr("bluetoothd is not on the bus"));
    SimulateDevices();
    AwaitEvent("phone 2: connected");
    std::vector<std::string> expected;
    for (const KnownDevice& device : kDevices) {
        const std::string id = std::to_string(expected.size() + 1);
        expected.push_back(kAddresses + id + "\t" + device.kind +
                           (id == "2" ? "\tconnected" : "\taway") + "\tuse\t" + device.name);
    }
    EXPECT_EQ(Tvctl({"device", "list"}), expected);
}

TEST_F(Devices, KeepTheirFlagAndHistoryUntilTheyAreForgotten) {
    SimulateDevices();
    Tvctl({"device", "dont-use", "a0:00:00:00:00:07"});
    Tvctl({"device", "history", "--record", kBar});
    KillSimulator();
    EXPECT_THAT(Tvctl({"device", "history", kBar}), ElementsAre("yes"));
    SimulateDevices();
    EXPECT_THAT(Tvctl({"device", "show", kBar}),
                testing::AllOf(testing::Contains("use\tfalse"), testing::Contains("type\t7"),
                               testing::Contains("absoluteVolume\ttrue")));
    Tvctl({"device", "use", kBar});
    EXPECT_THAT(Tvctl({"device", "list", "--json"}).front(),
                HasSubstr("\"name\":\"[AV] Bar\",\"type\":7,\"use\":true"));
    Tvctl({"device", "dont-use", kBar});
    Tvctl({"device", "forget", kBar});
    EXPECT_THAT(Tvctl({"device", "history", kBar}), ElementsAre("no"));
    EXPECT_THAT(TvctlFailure({"device", "forget", kBar}), HasSubstr("has nothing about"));
    Tvctl({"device", "history", "--record", kBar});
    {
        // Somebody who reads keeps others from writing.
        SqlitePtr reader;
        ASSERT_EQ(sqlite3_open(Database().c_str(), Out(reader)), SQLITE_OK);
        Sql(reader, "BEGIN; SELECT * FROM volume_info");
        EXPECT_THAT(TvctlFailure({"device", "forget", kBar}),
                    HasSubstr("could not store the change"));
    }
    EXPECT_THAT(Tvctl({"device", "list"})[6], EndsWith("\tuse\t[AV] Bar"));
    EXPECT_THAT(TvctlFailure({"device", "use", "A0:00:00:00:00:05"}),
                HasSubstr("'Cans' is not an audio"));
    EXPECT_THAT(TvctlFailure({"device", "type", "A0:00:00:00:00:0A"}), HasSubstr("not bonded"));
}

TEST_F(Devices, AreNotTakenFromAFileThatIsNoDatabase) {
    SimulateDevices();
    Tvctl({"device", "list"});
    std::ofstream(Database(), std::ios::trunc) << std::string(4096, 'x');
    for (const char* command : {"show", "use", "forget", "history"}) {
        EXPECT_THAT(TvctlFailure({"device", command, kBar}), HasSubstr("database cannot be used"));
    }
    EXPECT_THAT(TvctlFailure({"device", "list"}), HasSubstr("database cannot be used"));
    std::filesystem::remove(Database());
    EXPECT_EQ(Tvctl({"device", "list"}).size(), 9U);
}

class Doctor : public Bench {};

TEST_F(Doctor, NamesWhatIsMissingUntilNothingIs) {
    EXPECT_THAT(TvctlFailure({"doctor"}),
                testing::AllOf(HasSubstr("FAIL  the service runs"),
                               HasSubstr("FAIL  the product is a rotating TV"),
                               HasSubstr("FAIL  Bluetooth is on: bluetoothd is not on the bus"),
                               HasSubstr("0 of 0 registered phones qualify"),
                               HasSubstr("FAIL  the ambient picture shows"),
                               HasSubstr("5 of 8 conditions do not hold")));
    SetUpTv({kAlice, kBen});
    StartSimulator(kAlicePhone);
    StartService();
    const std::string unbonded = std::string("FAIL  phone ") + kBen + " can be connected";
    EXPECT_THAT(TvctlFailure({"doctor"}), HasSubstr(unbonded + ": it is not bonded"));
    EXPECT_THAT(Tvctl({"phone", "add", kBen}), ElementsAre(HasSubstr("not bonded")));
    Tvctl({"phone", "remove", kBen});
    EXPECT_THAT(TvctlFailure({"phone", "off", kBen}), HasSubstr("is not registered"));
    EXPECT_THAT(Tvctl({"phone", "list"}), ElementsAre(EndsWith("\tconnects\tAlice")));
    EXPECT_EQ(std::system("TERM=xterm script -qec '" BIN_DIR "/tvctl phone list' /dev/null | "
                          "grep -q '\x1b\\[1mADDRESS  *SETTING  POWER  RESULT    NAME'"),
              0);
    EXPECT_THAT(Tvctl({"doctor"}), testing::Each(testing::StartsWith("ok    ")));
    Tvctl({"power", "set", "wakeup-reason", "94"});
    EXPECT_THAT(TvctlFailure({"doctor"}), HasSubstr("FAIL  the wake-up reason lets phones"));
}

TEST_F(Devices, AreWatchedAndEachThatIsNotRecognisedHasItsReason) {
    SetUpTv({"A0:00:00:00:00:0A", "A0:00:00:00:00:08", "A0:00:00:00:00:0B"});
    Tvctl({"phone", "add", "--off", "A0:00:00:00:00:05"});
    SimulateDevices("advertises=identity\nadvertise-after-ms=1\n");
    const std::vector<std::string> watched = Tvctl({"phone", "watch", "--seconds", "1"});
    EXPECT_THAT(watched, testing::IsSupersetOf(
                             {HasSubstr("A0:00:00:00:00:08\tfrom A0:00:00:00:00:08\t-55 dBm"),
                              HasSubstr("-55 dBm\tnot registered"),
                              HasSubstr("00:0A\tnot bonded: bluetoothctl pair A0:00:00:00:00:0A"),
                              HasSubstr("00:08\trecognised"), HasSubstr("00:0B\tnot bonded"),
                              HasSubstr("00:05\tits setting is off")}));
    Tvctl({"feature", "set", "tv-platform/recognise_bonded_phones", "false"});
    EXPECT_THAT(TvctlFailure({"phone", "watch", "--seconds", "1"}),
                testing::AllOf(HasSubstr("recognise_bonded_phones is false"),
                               HasSubstr("no phone was heard that would be connected")));
}

class Box : public Devices {
protected:
    void SharedFolder(const std::string& folder) const {
        namespace fs = std::filesystem;
        fs::create_directories(Root() + folder);
        fs::permissions(Root() + folder,
                        fs::perms::owner_all | fs::perms::group_all | fs::perms::set_gid);
    }
};

TEST_F(Box, IsToldWhatEachWrongUseGotWrong) {
    const std::pair<std::vector<std::string>, const char*> uses[] = {
        {{"nope"}, "unknown command: nope;"},
        {{"conf", "nope"}, "unknown command: conf nope;"},
        {{"phone", "add"}, "usage: tvctl phone add ADDRESS [--off]"},
        {{"phone", "list", "--", "--json"}, "usage: tvctl phone list"},
        {{"phone", "add", "1"}, "'1' is not a Bluetooth address"},
        {{"conf", "watch", "db/box/key", "db/"}, "'db/' is not a key"},
        {{"conf", "set", "db/box/key", "2", "--type=bools"}, "not 'bools'"},
        {{"conf", "set", "db/box/key", "x", "--type", "bool"}, "'x' is not a bool"},
        {{"power", "show", "--off"}, "unknown option: --off"},
        {{"power", "show", "charge"}, "unknown state: charge"},
        {{"wake", "--retry"}, "--retry needs a value: SECONDS"},
        {{"-v", "feature", "set", "x", "red"}, "'red' is not true, false or an integer"}};
    for (const auto& [words, answer] : uses) {
        EXPECT_THAT(TvctlFailure(words, "status 2"), HasSubstr(answer));
    }
    EXPECT_THAT(Tvctl({"--json", "feature", "set", "box/x", "2"}),
                ElementsAre(R"({"name":"box/x","value":2})"));
    Tvctl({"feature", "unset", "box/x"});
    EXPECT_THAT(TvctlFailure({"feature", "unset", "box/x"}), HasSubstr("box/x is not set"));
    Tvctl({"--json", "conf", "set", "db/box/key", "-5"});
    EXPECT_THAT(Tvctl({"conf", "list", "--json"}),
                ElementsAre(R"([{"key":"db/box/key","type":"int","value":-5}])"));
}

TEST_F(Box, GetsItsFirstKeysFromAFileWhoseMistakesCostNothingElse) {
    SharedFolder("/var/lib/tv-platform");
    Tvctl({"conf", "set", "db/box/kept", "mine"});
    const std::string file = Root() + "/keys";
    std::ofstream(file) << "# comment\n\ndb/box/text string  two words \ndb/box/empty string\n"
                           "box/none int 1\ndb/box/kept string yours\ndb/box/number int one\n"
                           "db/box/printed\tstring\t  three\r\n \nmemory/box/flag bool true";
    EXPECT_THAT(TvctlFailure({"conf", "load", file}),
                testing::AllOf(HasSubstr("memory/box/flag\tbool\ttrue"),
                               HasSubstr("keys:7: 'one' is not an int")));
    EXPECT_THAT(Tvctl({"conf", "list"}),
                ElementsAre("db/box/empty\tstring\t", "db/box/kept\tstring\tmine",
                            "db/box/printed\tstring\t  three", "db/box/text\tstring\ttwo words ",
                            "memory/box/flag\tbool\ttrue"));
    // Whoever writes it first, it is the group's.
    struct stat status = {};
    ASSERT_EQ(stat((Root() + "/var/lib/tv-platform/config.db").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0660U);
}

TEST_F(Box, KeepsThePhonesOfAllWhoAddSomeAtOnce) {
    EXPECT_EQ(std::system("for i in 1 2 3 4; do for j in 1 2 3 4; do " BIN_DIR
                          "/tvctl phone add A0:00:00:00:0$i:0$j; done & done; wait"),
              0);
    EXPECT_THAT(Tvctl({"phone", "list"}),
                testing::AllOf(testing::SizeIs(16), testing::Each(HasSubstr("\tconnects\t"))));
}

TEST_F(Box, DoesNotFollowWhatAMemberOfTheGroupPlanted) {
    SharedFolder("/var/lib/tv-platform");
    const std::string state = Root() + "/var/lib/tv-platform/";
    ASSERT_EQ(mkfifo((state + "config.changed").c_str(), 0666), 0);
    Tvctl({"conf", "set", "db/box/key", "1"});
    std::filesystem::remove(state + "config.db");
    std::filesystem::create_symlink(Root() + "/made", state + "config.db");
    TvctlFailure({"conf", "set", "db/box/key", "1"});
    EXPECT_FALSE(std::filesystem::exists(Root() + "/made"));
}

// As SQLite leaves it when it dies in a transaction of two databases (SQLite's file format, 3),
// both of which are to be found through `superJournal`.
void LeaveJournal(const std::string& journal, const std::string& superJournal) {
    const auto number = [](std::uint32_t value) {
        std::string bytes;
        for (int shift = 24; shift >= 0; shift -= 8) {
            bytes += static_cast<char>(value >> shift);
        }
        return bytes;
    };
    const std::string magic = "\xd9\xd5\x05\xf9\x20\xa1\x63\xd7";
    std::string content = magic + number(0) + number(0) + number(1) + number(512) + number(4096);
    content.resize(512);
    std::uint32_t sum = 0;
    for (const char c : superJournal) {
        sum += static_cast<std::uint32_t>(c);
    }
    std::ofstream(journal) << content << number(1) << superJournal
                           << number(static_cast<std::uint32_t>(superJournal.size())) << number(sum)
                           << magic;
}

TEST_F(Box, HarmsNothingElseWhateverLiesBesideItsDatabases) {
    const std::string victim = Root() + "/victim";
    std::ofstream(victim) << "mine";
    SimulateDevices();
    Tvctl({"device", "history", "--record", kBar});
    Tvctl({"conf", "set", "db/box/key", "1"});
    const std::string config = Root() + "/var/lib/tv-platform/config.db";
    LeaveJournal(config + "-journal", victim);
    LeaveJournal(Database() + "-journal", victim);
    EXPECT_THAT(Tvctl({"conf", "list", "db/"}), ElementsAre("db/box/key\tint\t1"));
    EXPECT_THAT(Tvctl({"device", "history", kBar}), ElementsAre("yes"));
    EXPECT_TRUE(std::filesystem::exists(victim));

    // A pipe would be waited for until somebody writes to it.
    std::filesystem::remove(config + "-journal");
    ASSERT_EQ(mkfifo((config + "-journal").c_str(), 0666), 0);
    EXPECT_THAT(TvctlFailure({"conf", "list"}), HasSubstr("Operation not permitted"));
    std::filesystem::remove(config + "-journal");

    constexpr const char* kEndless =
        "WITH RECURSIVE n(i) AS (VALUES(1) UNION ALL SELECT i + 1 FROM n) "
        "SELECT 'k', 'int', 1, max(i) FROM n";
    SqlitePtr other;
    ASSERT_EQ(sqlite3_open(config.c_str(), Out(other)), SQLITE_OK);
    Sql(other, std::string("ALTER TABLE entries RENAME TO kept; CREATE VIEW entries"
                           "(key, type, value, revision) AS ") +
                   kEndless);
    EXPECT_THAT(TvctlFailure({"conf", "get", "db/box/key"}), HasSubstr("config.db: "));
    other.reset();
    ASSERT_EQ(db_util_open(Database().c_str(), Out(other), 1), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(other.get(), kEndless, nullptr, nullptr, nullptr), SQLITE_INTERRUPT);
}

TEST_F(Box, MayHaveItsStateOnAnotherDisk) {
    namespace fs = std::filesystem;
    fs::remove_all(Root() + "/var/lib");
    SharedFolder("/disk/lib/tv-platform");
    fs::create_directories(Root() + "/var");
    fs::create_directory_symlink(Root() + "/disk/lib", Root() + "/var/lib");
    Tvctl({"conf", "set", "db/box/key", "1"});
    EXPECT_THAT(Tvctl({"conf", "get", "db/box/key"}), ElementsAre("1"));
    // A value is shown, and not carried out by the terminal that shows it.
    Tvctl({"conf", "set", "db/box/key", "--type", "string",
           "a\tb\n\x1b[2J\r\xc2\x9b\xe2\x80\xae\xe2\x80\xa8\xff"});
    EXPECT_THAT(Tvctl({"conf", "get", "db/box/key"}),
                ElementsAre("a\tb", "\\x1B[2J\\x0D\\xC2\\x9B\\xE2\\x80\\xAE\\xE2\\x80\\xA8\\xFF"));
}

TEST_F(Box, IsWokenOnceMoreWhenItsAdapterComesBack) {
    SetUpTv();
    EXPECT_THAT(TvctlFailure({"wake", "--retry", "1"}), HasSubstr("the service is not running"));
    StartSimulator("[adapter]\npresent=false\n");
    StartService();
    EXPECT_THAT(TvctlFailure({"wake", "--retry", "1"}),
                HasSubstr("no Bluetooth adapter was ready"));
    KillSimulator();
    AwaitLog("bluetoothd left the bus");
    StartSimulator("[adapter]\npresent=false\nappears-after-ms=2000\n" + std::string(kAlicePhone));
    Tvctl({"wake", "--retry", "5"});
    AwaitEvent("phone Alice: plays");
    // One signal for each time that there was none, and one that found it.
    EXPECT_EQ(CountLog("PrePareAndDoAutoConnect recieved"), CountLog("Bluetooth is off: ") + 1);
    EXPECT_GE(CountLog("Bluetooth is off: there is no adapter"), 1U);
}

TEST_F(Box, IsWokenAndItsAttemptWatched) {
    const auto wake = [](const std::string& log) {
        return std::vector<std::string>{"wake", "--wait", "--log", log};
    };
    StartAll();
    const auto told = Tvctl(wake(LogFile()));
    EXPECT_THAT(told, Contains(HasSubstr(std::string(kAlice) + " connected after ")));
    EXPECT_EQ(told.back(), "there is music");
    Tvctl({"power", "set", "ambient-mode", "0"});
    EXPECT_THAT(TvctlFailure(wake(LogFile())),
                HasSubstr("no music: the ambient picture does not show (mode 0)"));
    EXPECT_THAT(TvctlFailure(wake("none")), HasSubstr("none: No such file or directory; with"));
}

}  // namespace
