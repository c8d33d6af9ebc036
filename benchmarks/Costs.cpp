// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <sqlite3.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>
#include <valgrind/callgrind.h>

#include <algorithm>
#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "autoconnect/ZemiAutoConnection/MobileList.h"
#include "autoconnect/src/AutoConnectDbg.h"
#include "common/CHandle.h"
#include "common/Source.h"
#include "platform/config_store.h"
#include "platform/linux/base/PlatformLog.h"
#include "utility/OpenedDatabase.h"

// What single operations of the service cost, each beside a floor: the least that does the same.
// Prints NAME=MICROSECONDS, the median of rounds in which all take turns. Under callgrind it leaves
// a dump for each instead, called NAME=HOW_OFTEN.
//
// Usage: costs             below $TV_ROOT; lines are logged to standard error
//        costs change      how long a change of a key takes to reach another process

namespace {

using Clock = std::chrono::steady_clock;

constexpr char kKey[] = "db/bench/key";
constexpr char kAddress[] = "A0:11:22:33:44:55";
constexpr int kRounds = 15;

double UsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::micro>(Clock::now() - start).count();
}

std::string UnderRoot(const char* path) {
    return std::string(std::getenv("TV_ROOT")) + path;
}

std::string Address(int i) {
    char text[18];
    std::snprintf(text, sizeof text, "A0:00:00:%02X:%02X:%02X", (i >> 16) & 0xFF, (i >> 8) & 0xFF,
                  i & 0xFF);
    return text;
}

void Require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "costs: failed: %s\n", what);
        std::exit(1);
    }
}

struct Case {
    const char* name;
    int repeats;  // in a round
    std::function<void()> run;
};

double TimeOf(const Case& each) {
    const auto start = Clock::now();
    for (int i = 0; i < each.repeats; ++i) {
        each.run();
    }
    return UsSince(start) / each.repeats;
}

void Measure(const std::vector<Case>& cases) {
    for (const Case& each : cases) {
        each.run();
        if (RUNNING_ON_VALGRIND != 0) {
            const int count = std::min(each.repeats, 10);
            const std::string dump = std::string(each.name) + '=' + std::to_string(count);
            CALLGRIND_ZERO_STATS;
            for (int i = 0; i < count; ++i) {
                each.run();
            }
            CALLGRIND_DUMP_STATS_AT(dump.c_str());
        }
    }
    if (RUNNING_ON_VALGRIND != 0) {
        return;
    }
    std::vector<std::vector<double>> times(cases.size());
    for (int round = 0; round < kRounds; ++round) {
        for (std::size_t i = 0; i < cases.size(); ++i) {
            times[i].push_back(TimeOf(cases[i]));
        }
    }
    for (std::size_t i = 0; i < cases.size(); ++i) {
        std::sort(times[i].begin(), times[i].end());
        std::printf("%s=%.4f\n", cases[i].name, times[i][kRounds / 2]);
    }
}

// ---- the registered list ----

// Two lists of lines would be most of what is measured.
struct Silence {
    Silence() { Platform::SetLogThreshold(DLOG_ERROR + 1); }
    ~Silence() { Platform::SetLogThreshold(DLOG_DEBUG); }
};

// A TV with that many qualifying phones.
void RegisterPhones(int count) {
    std::string settings;
    std::string masks;
    for (int i = 0; i < count; ++i) {
        settings +=
            (i == 0 ? "[{\"address\":\"" : ",{\"address\":\"") + Address(i) + "\",\"value\":\"Y\"}";
        masks += MobileList::GetXorMac(Address(i)) + ",";
    }
    Require(vconf_set_str("db/nirvo/musictv_paired3", (settings + "]").c_str()) == 0, "phones");
    Require(vconf_set_str("db/org.orlix.bleapp/added_mobile_keylist", masks.c_str()) == 0, "masks");
}

void MeasureList() {
    const Silence silence;
    const struct {
        int phones;
        const char* rebuild;
        const char* lookUp;
    } kSizes[] = {{10, "rebuild_10", "look_up_10"},
                  {100, "rebuild_100", "look_up_100"},
                  {1000, "rebuild_1000", "look_up_1000"},
                  {10000, "rebuild_10000", "look_up_10000"}};
    for (const auto& size : kSizes) {
        RegisterPhones(size.phones);
        MobileList list;
        std::vector<std::string> strangers;
        for (int i = 0; i < 100; ++i) {
            strangers.push_back(Address(0x800000 + i));
        }
        Measure({{size.rebuild, 1, [&] { list.UpdateList(); }},
                 {size.lookUp, 10, [&] {
                      for (const std::string& stranger : strangers) {
                          Require(!list.Exist(stranger), "stranger");
                      }
                  }}});
    }
}

// ---- the configuration store ----

void ReadBare(sqlite3_stmt* statement) {
    sqlite3_bind_text(statement, 1, kKey, -1, SQLITE_STATIC);
    Require(sqlite3_step(statement) == SQLITE_ROW, "bare read");
    const MallocPtr<char> text(
        strdup(reinterpret_cast<const char*>(sqlite3_column_text(statement, 1))));
    sqlite3_reset(statement);
}

void Flush() {
    static const int file = open(UnderRoot("/flush").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    static const std::string page(4096, 'x');
    Require(pwrite(file, page.data(), page.size(), 0) == 4096 && fdatasync(file) == 0, "flush");
}

void MeasureStore() {
    Require(vconf_set_str(kKey, "value") == 0, "key");
    SqlitePtr bare;
    StatementPtr select;
    Require(sqlite3_open_v2(UnderRoot("/var/lib/tv-platform/config.db").c_str(), Out(bare),
                            SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr) == SQLITE_OK,
            "bare store");
    sqlite3_prepare_v2(bare.get(), "SELECT type, value, revision FROM entries WHERE key = ?1", -1,
                       Out(select), nullptr);
    int number = 0;
    Measure({{"config_read", 200, [] { MallocPtr<char>(vconf_get_str(kKey)); }},
             {"config_read_floor", 200, [&] { ReadBare(select.get()); }},
             {"config_write", 1,
              [&] {
                  // The store may know that nothing changes.
                  Require(vconf_set_int("db/bench/number", ++number) == 0, "write");
              }},
             {"config_write_floor", 1, Flush}});
}

// ---- the device database ----

// The same statement as the service's, on a connection that is opened and closed for it.
void ExecuteBare(const char* sql) {
    static const std::string path =
        UnderRoot("/opt/usr/home/owner/apps_rw/org.orlix.nirvo/data/BT_Connection_record.db");
    SqlitePtr connection;
    Require(sqlite3_open_v2(path.c_str(), Out(connection),
                            SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr) == SQLITE_OK,
            "bare database");
    sqlite3_exec(connection.get(), "PRAGMA synchronous = EXTRA", nullptr, nullptr, nullptr);
    Require(sqlite3_exec(connection.get(), sql, nullptr, nullptr, nullptr) == SQLITE_OK, sql);
}

void MeasureDatabase() {
    const Silence silence;
    int number = 0;
    Util::OpenedDatabase()->InsertData(kAddress, "Phone", BT_DEVICE_USE, {}, 1,
                                       BT_DEVICE_TYPE_UNKNOWN, "service", "provider", 1, 2);
    Measure(
        {{"database_read", 5,
          [] {
              bt_db_dev_info_s record;
              Require(Util::OpenedDatabase()->GetRecordFromDB(record, kAddress), "record");
          }},
         {"database_read_floor", 5,
          [] {
              ExecuteBare(
                  "select * from bt_device_info where Remote_address = "
                  "'A0:11:22:33:44:55';");
          }},
         {"database_update", 1,
          [&] { Util::OpenedDatabase()->UpdateDataOnDB(kAddress, BT_DB_PROFILE_TYPE, ++number); }},
         {"database_update_floor", 1, [&] {
              ExecuteBare(("UPDATE bt_device_info set Profile_type = '" + std::to_string(++number) +
                           "' where Remote_address = 'A0:11:22:33:44:55';")
                              .c_str());
          }}});
}

// ---- a log line ----

[[gnu::noinline, gnu::format(printf, 1, 2)]] void Nothing(const char* format, ...) {
    asm volatile("" ::"r"(format) : "memory");
}

void TracedFunction() {
    BTLOG_TRACE();
}

void MeasureLog() {
    const int journal = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const sockaddr_un address = {AF_UNIX, "/run/systemd/journal/socket"};
    const std::string datagram =
        "PRIORITY=6\nSYSLOG_IDENTIFIER=BT_AUTO_CONNECT\nMESSAGE=Costs.cpp: operator()(200) > Try "
        "to connect "
        "A0:11:22:33:44:55\n";
    const std::string line =
        "2026-01-01 00:00:00.000 I BT_AUTO_CONNECT: Costs.cpp: operator()(200) > Try to connect "
        "A0:11:22:33:44:55\n";
    const auto sendToJournal = [&] {
        sendto(journal, datagram.data(), datagram.size(), MSG_NOSIGNAL,
               reinterpret_cast<const sockaddr*>(&address), sizeof address);
    };
    const auto writeLine = [&] {
        Require(write(STDERR_FILENO, line.data(), line.size()) > 0, "standard error");
    };
    const bool isJournal = g_log_writer_is_journald(STDERR_FILENO) != FALSE;
    const char* phone = kAddress;
    Measure({{"log", 200, [&] { BTLOG_INFO("Try to connect %s", phone); }},
             {"log_floor", 200, isJournal ? std::function<void()>(sendToJournal) : writeLine}});
    close(journal);
    const Silence silence;
    Measure({{"log_filtered", 1000, [&] { BTLOG_INFO("Try to connect %s", phone); }},
             {"log_filtered_floor", 1000,
              [&] { Nothing("%s: %s(%d) > Try to connect %s", "f", "g", 1, phone); }},
             {"log_tracer_filtered", 1000, TracedFunction}});
}

// ---- a change that another process watches ----

constexpr char kWatched[] = "memory/bench/watched";

void Watch(int pipe) {
    const auto onChange = [](keynode_t* /*node*/, void* data) {
        const auto now = Clock::now();
        Require(write(*static_cast<int*>(data), &now, sizeof now) == sizeof now, "pipe");
    };
    Require(vconf_notify_key_changed(kWatched, onChange, &pipe) == 0, "watch");
    const auto ready = Clock::now();
    Require(write(pipe, &ready, sizeof ready) == sizeof ready, "pipe");
    while (true) {
        g_main_context_iteration(nullptr, TRUE);
    }
}

void MeasureChange() {
    int pipes[2];
    Require(pipe(pipes) == 0, "pipe");
    const pid_t watcher = fork();
    if (watcher == 0) {
        Watch(pipes[1]);
    }
    Clock::time_point heard;
    std::vector<double> times;
    Require(read(pipes[0], &heard, sizeof heard) == sizeof heard, "watcher");
    for (int i = 0; i < 50; ++i) {
        usleep(20000);
        const auto start = Clock::now();
        Require(vconf_set_int(kWatched, i) == 0, "write");
        Require(read(pipes[0], &heard, sizeof heard) == sizeof heard, "watcher");
        times.push_back(std::chrono::duration<double, std::milli>(heard - start).count());
    }
    kill(watcher, SIGKILL);
    waitpid(watcher, nullptr, 0);
    std::sort(times.begin(), times.end());
    std::printf("change=%.4f\n", times[times.size() / 2]);
}

}  // namespace

int main(int argc, char** /*argv*/) {
    if (argc > 1) {
        MeasureChange();
        return 0;
    }
    MeasureList();
    MeasureStore();
    MeasureDatabase();
    MeasureLog();
}
