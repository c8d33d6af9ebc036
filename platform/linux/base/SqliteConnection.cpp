// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/base/SqliteConnection.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <map>
#include <mutex>
#include <set>
#include <thread>

#include "platform/linux/base/Folders.h"
#include "platform/linux/base/MainLoop.h"

namespace Platform {

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr char kVfsName[] = "tv-platform";
constexpr std::chrono::milliseconds kBusyTimeout(1000);
// SQLite's own waiting grows to 100 ms, and who waits that long loses every time against processes
// that write without a pause.
constexpr std::chrono::milliseconds kBusyStep(2);
// Steps of SQLite's machine, about a second of them. A statement of this product takes a few
// thousand.
constexpr int kMaxSteps = 50'000'000;

// Of ShortPatience; a sleep takes longer than it is told.
constexpr std::chrono::milliseconds kTurnTimeout(90);

// What this thread waited while its patience was short.
struct Turn {
    bool isShort = false;
    std::int64_t number = 0;  // of the main loop
    Clock::duration waited{0};
};
thread_local Turn theTurn;

// Waiting for one file, by all connections of the process.
class Patience {
public:
    static Patience& Of(const std::string& path) {
        static std::mutex mutex;
        static auto& all = *new std::map<std::string, Patience>();
        const std::lock_guard<std::mutex> lock(mutex);
        return all[path];
    }

    static int OnBusy(void* self, int attempts) noexcept {
        return static_cast<int>(static_cast<Patience*>(self)->Wait(attempts));
    }

private:
    bool Wait(int attempts) {
        const auto now = Clock::now();
        auto& exhaustedUntil = theTurn.isShort ? m_shortExhaustedUntil : m_exhaustedUntil;
        if (now.time_since_epoch().count() < exhaustedUntil) {
            return false;
        }
        const bool isOver = theTurn.isShort ? theTurn.waited + kBusyStep >= kTurnTimeout
                                            : attempts * kBusyStep >= kBusyTimeout;
        if (isOver) {
            exhaustedUntil = (now + kBusyTimeout).time_since_epoch().count();
            return false;
        }
        std::this_thread::sleep_for(kBusyStep);
        theTurn.waited += std::max<Clock::duration>(Clock::now() - now, kBusyStep);
        return true;
    }

    std::atomic<Clock::rep> m_exhaustedUntil{0};
    std::atomic<Clock::rep> m_shortExhaustedUntil{0};  // says little to those who may wait longer
};

// SQLite's file access, in the place of open(2).
int OpenRegular(const char* path, int flags, int mode) {
    const fs::path folder = fs::path(path).parent_path();
    struct stat owner = {};
    const bool isShared = IsShared(folder, owner);
    // A pipe would wait for its other end.
    const int fd = open(path, flags | O_NONBLOCK | (isShared ? O_NOFOLLOW : 0), mode);
    struct stat file = {};
    if (fd < 0 || fstat(fd, &file) != 0 || S_ISDIR(file.st_mode)) {
        return fd;
    }
    const bool isOurs = file.st_uid == owner.st_uid || file.st_gid == owner.st_gid;
    if (S_ISFIFO(file.st_mode) || (isShared && !(S_ISREG(file.st_mode) && isOurs))) {
        close(fd);
        errno = EPERM;
        return -1;
    }
    return fd;
}

// The databases that this process has opened, by their full paths.
class KnownFiles {
public:
    void Add(const char* path) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_paths.insert(path);
    }
    // Whether the path is one of them, or a journal of one.
    bool Has(const std::string& path) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const std::string database = path.substr(0, path.rfind('-'));
        return m_paths.count(path) != 0 ||
               (m_paths.count(database) != 0 &&
                (path == database + "-journal" || path == database + "-wal"));
    }

private:
    std::mutex m_mutex;
    std::set<std::string> m_paths;
};

KnownFiles& Known() {
    static KnownFiles& known = *new KnownFiles();
    return known;
}

sqlite3_vfs* System(sqlite3_vfs* vfs) {
    return static_cast<sqlite3_vfs*>(vfs->pAppData);
}

int OnOpen(sqlite3_vfs* vfs, const char* path, sqlite3_file* file, int flags,
           int* outFlags) noexcept {
    file->pMethods = nullptr;
    if ((flags & SQLITE_OPEN_SUPER_JOURNAL) != 0) {
        errno = EPERM;
        return SQLITE_CANTOPEN;
    }
    if ((flags & SQLITE_OPEN_MAIN_DB) != 0) {
        Known().Add(path);
    }
    const OwnerIdentity identity(path == nullptr ? fs::path() : fs::path(path).parent_path());
    return System(vfs)->xOpen(System(vfs), path, file, flags, outFlags);
}

int OnDelete(sqlite3_vfs* vfs, const char* path, int syncFolder) noexcept {
    if (!Known().Has(path)) {
        errno = EPERM;
        return SQLITE_IOERR_DELETE;
    }
    const OwnerIdentity identity(fs::path(path).parent_path());
    return System(vfs)->xDelete(System(vfs), path, syncFolder);
}

// A file that a journal names besides its database is reported as missing; SQLite then ignores the
// journal.
int OnAccess(sqlite3_vfs* vfs, const char* path, int flags, int* result) noexcept {
    *result = 0;
    if (!Known().Has(path)) {
        return SQLITE_OK;
    }
    const OwnerIdentity identity(fs::path(path).parent_path());
    return System(vfs)->xAccess(System(vfs), path, flags, result);
}

// SQLite follows every link, so that a file has one journal. In a shared folder only those above
// the file are followed, and the file itself must not be one.
int OnFullPathname(sqlite3_vfs* vfs, const char* name, int size, char* out) noexcept {
    const fs::path folder = fs::path(name).parent_path();
    if (IsReachedByPlantedLink(folder)) {
        errno = ELOOP;
        return SQLITE_CANTOPEN;
    }
    if (!IsShared(folder)) {
        return System(vfs)->xFullPathname(System(vfs), name, size, out);
    }
    std::error_code error;
    const fs::path full = fs::canonical(folder, error) / fs::path(name).filename();
    const auto room = static_cast<gsize>(size);
    if (error || g_strlcpy(out, full.c_str(), room) >= room) {
        errno = error ? error.value() : ENAMETOOLONG;
        return SQLITE_CANTOPEN;
    }
    return SQLITE_OK;
}

// The name of the system's file access with these rules; made on first use.
const char* VfsName() {
    static const sqlite3_vfs& vfs = *[] {
        sqlite3_vfs* const system = sqlite3_vfs_find(nullptr);
        auto* own = new sqlite3_vfs(*system);
        own->zName = kVfsName;
        own->pAppData = system;
        own->pNext = nullptr;
        own->xOpen = OnOpen;
        own->xDelete = OnDelete;
        own->xAccess = OnAccess;
        own->xFullPathname = OnFullPathname;
        // Only there is the opened file in hand before SQLite reads it.
        if (system->iVersion >= 3 && system->xSetSystemCall != nullptr) {
            system->xSetSystemCall(system, "open",
                                   reinterpret_cast<sqlite3_syscall_ptr>(OpenRegular));
        }
        sqlite3_vfs_register(own, 0);
        return own;
    }();
    return vfs.zName;
}

// Called after kMaxSteps of one statement. Who keeps a statement must set its count back after each
// use (SQLITE_STMTSTATUS_VM_STEP).
int OnSteps(void* /*userData*/) noexcept {
    return 1;
}

void Harden(sqlite3* connection, Patience& patience) {
    sqlite3_extended_result_codes(connection, 1);
    sqlite3_busy_handler(connection, Patience::OnBusy, &patience);
    sqlite3_progress_handler(connection, kMaxSteps, OnSteps, nullptr);
    for (const int option : {SQLITE_DBCONFIG_TRUSTED_SCHEMA, SQLITE_DBCONFIG_ENABLE_VIEW,
                             SQLITE_DBCONFIG_ENABLE_TRIGGER}) {
        sqlite3_db_config(connection, option, 0, nullptr);
    }
}

}  // namespace

ShortPatience::ShortPatience() {
    const auto turn = LoopTurn();
    theTurn.isShort = turn.has_value();
    if (turn && *turn != theTurn.number) {
        theTurn.number = *turn;
        theTurn.waited = {};
    }
}

ShortPatience::~ShortPatience() {
    theTurn.isShort = false;
}

int OpenSqlite(const std::string& path, bool create, SqlitePtr& connection) {
    const bool isMade = create && MakeSharedFile(path);
    const int code = sqlite3_open_v2(
        path.c_str(), Out(connection),
        SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | (create ? SQLITE_OPEN_CREATE : 0), VfsName());
    if (code == SQLITE_OK) {
        Harden(connection.get(), Patience::Of(path));
    } else if (isMade) {
        const OwnerIdentity identity(fs::path(path).parent_path());
        unlink(path.c_str());
    }
    return code;
}

std::string DescribeSqlite(sqlite3* connection, int code) {
    const int primary = code & 0xFF;
    // "SQL logic error" says nothing; the connection knows which.
    std::string text = primary == SQLITE_ERROR && connection != nullptr ? sqlite3_errmsg(connection)
                                                                        : sqlite3_errstr(code);
    const int systemError = connection != nullptr ? sqlite3_system_errno(connection) : 0;
    if ((primary == SQLITE_CANTOPEN || primary == SQLITE_IOERR) && systemError != 0) {
        text += std::string(" (") + std::strerror(systemError) + ")";
    }
    return text;
}

}  // namespace Platform
