// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tvctl/trace/JournalReader.h"

#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <map>
#include <optional>

#include "common/Parse.h"

namespace Tvctl {

namespace {

constexpr const char* kUnits[] = {"bt-autoconnect.service", "bt-autoconnect-player.service"};

std::string HexOf(sd_id128_t id) {
    char text[SD_ID128_STRING_MAX];
    return sd_id128_to_string(id, text);
}

// The boots in the journal, in the order of their first entries.
std::vector<std::string> Boots(sd_journal* journal) {
    std::vector<std::string> found;
    const void* data = nullptr;
    std::size_t size = 0;
    if (sd_journal_query_unique(journal, "_BOOT_ID") >= 0) {
        SD_JOURNAL_FOREACH_UNIQUE(journal, data, size) {
            found.emplace_back(static_cast<const char*>(data), size);
        }
    }
    std::map<std::uint64_t, std::string> begins;
    for (const std::string& match : found) {
        std::uint64_t begin = 0;
        if (sd_journal_add_match(journal, match.data(), match.size()) >= 0 &&
            sd_journal_seek_head(journal) >= 0 && sd_journal_next(journal) > 0 &&
            sd_journal_get_realtime_usec(journal, &begin) >= 0) {
            begins[begin] = match.substr(match.find('=') + 1);
        }
        sd_journal_flush_matches(journal);
    }
    std::vector<std::string> boots;
    boots.reserve(begins.size());
    for (const auto& [begin, boot] : begins) {
        boots.push_back(boot);
    }
    return boots;
}

// The id of the boot so many before this one, 0 for this one; empty when there is none.
std::string BootBefore(sd_journal* journal, int offset) {
    sd_id128_t id = {};
    std::string current = sd_id128_get_boot(&id) < 0 ? "" : HexOf(id);
    if (offset == 0) {
        return current;
    }
    const std::vector<std::string> boots = Boots(journal);
    const auto index = std::find(boots.begin(), boots.end(), current) - boots.begin() + offset;
    const bool isThere = index >= 0 && index < static_cast<std::ptrdiff_t>(boots.size());
    return isThere ? boots[static_cast<std::size_t>(index)] : "";
}

// The group that may read a file that this user may not; empty when this user may, too, or it is
// not there.
std::string GroupThatMayRead(const std::string& path) {
    struct stat state = {};
    if (stat(path.c_str(), &state) != 0 || access(path.c_str(), R_OK) == 0) {
        return "";
    }
    const group* const owner = getgrgid(state.st_gid);
    return owner != nullptr ? owner->gr_name : std::to_string(state.st_gid);
}

// The same of the journals in a folder.
std::string GroupOfFolder(const std::string& folder) {
    std::error_code unreadable;
    for (const auto& file : std::filesystem::directory_iterator(folder, unreadable)) {
        std::string group =
            file.path().extension() == ".journal" ? GroupThatMayRead(file.path()) : "";
        if (!group.empty()) {
            return group;
        }
    }
    return "";
}

// The same of this machine's journal.
std::string GroupOfMachine() {
    sd_id128_t machine = {};
    if (sd_id128_get_machine(&machine) < 0) {
        return "";
    }
    for (const char* folder : {"/var/log/journal/", "/run/log/journal/"}) {
        std::string group = GroupOfFolder(folder + HexOf(machine));
        if (!group.empty()) {
            return group;
        }
    }
    return "";
}

}  // namespace

JournalReader::JournalReader(const LogSource& source, TakeRecord take)
    : m_source(source), m_take(std::move(take)) {
    int result = Open();
    if (result >= 0 && m_source.kind == LogSource::Kind::kMachine &&
        sd_journal_has_runtime_files(m_journal.get()) <= 0 &&
        sd_journal_has_persistent_files(m_journal.get()) <= 0) {
        // Files that the user may not read are left out without an error.
        result = GroupThatMay().empty() ? -ENOENT : -EACCES;
    }
    if (result >= 0) {
        result = Select();
    }
    if (result >= 0 && source.onlyNew) {
        // From the tail no step leads to what is written later; from the last entry it does.
        result = sd_journal_seek_tail(m_journal.get());
        result = result < 0 ? result : sd_journal_previous(m_journal.get());
    }
    if (result == 0) {  // all is wanted, or nothing is there yet
        result = sd_journal_seek_head(m_journal.get());
    }
    if (result < 0 && m_count.failure.empty()) {
        m_count.failure = WhyUnreadable(-result);
    }
}

int JournalReader::Open() {
    if (m_source.kind == LogSource::Kind::kMachine) {
        return sd_journal_open(Out(m_journal), SD_JOURNAL_LOCAL_ONLY | SD_JOURNAL_SYSTEM);
    }
    if (m_source.kind == LogSource::Kind::kDirectory) {
        return sd_journal_open_directory(Out(m_journal), m_source.path.c_str(), 0);
    }
    const char* files[] = {m_source.path.c_str(), nullptr};
    return sd_journal_open_files(Out(m_journal), files, 0);
}

// Limits what is read to the units and the boot.
int JournalReader::Select() {
    const auto offset = ParseInt(m_source.boot);
    const std::string boot = offset                   ? BootBefore(m_journal.get(), *offset)
                             : m_source.boot == "all" ? ""
                                                      : m_source.boot;
    if (offset && boot.empty()) {
        m_count.failure = NameOf(m_source) + " has no boot " + m_source.boot;
        return -ENOENT;
    }
    int result = 0;
    for (const char* unit : kUnits) {
        const std::string match = std::string("_SYSTEMD_UNIT=") + unit;
        result = result < 0 ? result : sd_journal_add_match(m_journal.get(), match.c_str(), 0);
    }
    return result < 0 || boot.empty()
               ? result
               : sd_journal_add_match(m_journal.get(), ("_BOOT_ID=" + boot).c_str(), 0);
}

void JournalReader::Read() {
    LogRecord record;
    const auto field = [this](const char* name) { return FieldOf(name); };
    int result = IsOver() ? 0 : 1;
    while (result > 0 && (result = sd_journal_next(m_journal.get())) > 0) {
        LoadEntry();
        const bool isRecord = m_parser.ParseEntry(field, record);
        if (isRecord) {
            m_take(record);
        }
        ++(isRecord ? m_count.records : m_count.skipped);
    }
    if (result < 0) {
        m_count.failure = WhyUnreadable(-result);
    } else if (m_count.records == 0 && !GroupThatMay().empty()) {
        m_count.failure = WhyUnreadable(EACCES);
    }
}

// All fields at once, because each that is asked for by its name is a walk over all.
void JournalReader::LoadEntry() {
    m_entry.clear();
    m_ends.clear();
    const void* data = nullptr;
    std::size_t size = 0;
    SD_JOURNAL_FOREACH_DATA(m_journal.get(), data, size) {
        m_entry.append(static_cast<const char*>(data), size);
        m_ends.push_back(m_entry.size());
    }
}

// "" where the entry has no such field.
std::string JournalReader::FieldOf(std::string_view name) const {
    std::uint64_t received = 0;
    if (name == "__REALTIME_TIMESTAMP") {
        return sd_journal_get_realtime_usec(m_journal.get(), &received) < 0
                   ? ""
                   : std::to_string(received);
    }
    std::size_t begin = 0;
    for (const std::size_t end : m_ends) {
        const std::string_view field = std::string_view(m_entry).substr(begin, end - begin);
        if (field.size() > name.size() && field[name.size()] == '=' &&
            field.substr(0, name.size()) == name) {
            return std::string(field.substr(name.size() + 1));
        }
        begin = end;
    }
    return "";
}

void JournalReader::Wait(int ms) {
    const int result = sd_journal_wait(m_journal.get(), static_cast<std::uint64_t>(ms) * 1000);
    if (result < 0) {
        m_count.failure = WhyUnreadable(-result);
    }
}

// Read the journal, or the part of it that this user may not read.
std::string JournalReader::GroupThatMay() const {
    switch (m_source.kind) {
        case LogSource::Kind::kMachine:
            return GroupOfMachine();
        case LogSource::Kind::kDirectory:
            return GroupOfFolder(m_source.path);
        default:
            return GroupThatMayRead(m_source.path);
    }
}

std::string JournalReader::WhyUnreadable(int error) const {
    const std::string group = error == EACCES || error == EPERM ? GroupThatMay() : "";
    return NameOf(m_source) + " cannot be read" +
           (m_source.kind == LogSource::Kind::kMachine ? "" : " as a journal") + ": " +
           std::strerror(error) +
           (group.empty() ? "" : "; root and the group " + group + " may read it");
}

}  // namespace Tvctl
