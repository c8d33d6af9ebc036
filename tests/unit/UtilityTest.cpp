// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <glib.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>

#include "common/CHandle.h"
#include "platform/bluetooth.h"
#include "platform/config_store.h"
#include "tests/memory_bus/MemoryBus.h"
#include "tests/unit/PlatformTest.h"
#include "tests/unit/UtilityFunctions.h"
#include "utility/AppDataUtil.h"

// Plays the scripts in tests/unit/utility, each in a process of its own, because some values are
// read once per process.

namespace {

using Utility::database;

bool isBondHeld = true;

int statements = 0;

int OnOpened(sqlite3* db, char** /*error*/, const sqlite3_api_routines* /*api*/) {
    const auto onStatement = [](unsigned, void*, void*, void*) { return ++statements, 0; };
    return sqlite3_trace_v2(db, SQLITE_TRACE_STMT, onStatement, nullptr);
}

// Becomes a line of what came of the step.
void Tell(const char* what, const std::string& text) {
    Recorder::Enter(Recorder::Kind::kCommand, Recorder::Thread::kMain, what, text);
}

// ---- what is around them ----

std::vector<TvSim::PhonePlan> phones;
SqlitePtr otherProgram;

int Number(const std::string& word) {
    return std::stoi(word, nullptr, 0);
}
std::string DatabaseFile() {
    return Util::AppDataUtil::getDataPath() + "BT_Connection_record.db";
}

void StartAgain(const Texts& /*words*/) {
    Tv::RunPending();
    EXPECT_THAT(Recorder::Leftovers(), IsEmpty());
    database.emplace();
    otherProgram.reset();
    isBondHeld = true;
    std::filesystem::remove_all(Tv::Root() + "/opt");
    std::filesystem::create_directories(Util::AppDataUtil::getDataPath());
    Tv::Reset();
}
void SetKey(const Texts& words) {  // KEY [TYPE VALUE]
    if (words.size() == 1) {
        Tv::SetKey(words[0], std::nullopt);
    } else if (words[1] == "string") {
        Tv::SetKey(words[0], words[2]);
    } else if (words[1] == "int") {
        Tv::SetKey(words[0], Number(words[2]));
    } else {
        Tv::SetKey(words[0], Tv::Flag{Number(words[2])});
    }
}
void SetApplications(const Texts& words) {  // ID or ID:runs
    std::map<std::string, bool> applications;
    for (const std::string& word : words) {
        const std::size_t colon = word.find(':');
        applications[word.substr(0, colon)] = colon != std::string::npos;
    }
    Tv::SetApplications(applications);
}
void WaitForLaunches(const Texts& /*words*/) {  // until each has its answer, and no longer
    while (Tv::LaunchesExpected() != 0) {
        g_main_context_iteration(nullptr, FALSE);
    }
}
void AddPhone(const Texts& words) {  // ADDRESS CLASS MODALIAS NAME
    TvSim::PhonePlan plan = Tv::QuietPhone(words[0]);
    plan.deviceClass = static_cast<std::uint32_t>(Number(words[1]));
    plan.modalias = words[2];
    plan.name = words[3];
    phones.push_back(plan);
}
void StartBluez(const Texts& words) {  // the adapter's name
    TvSim::AdapterPlan adapter;
    adapter.name = words[0];
    Tv::StartBluez(std::exchange(phones, {}), adapter);
}
void TellHid(const Texts& words) {  // ADDRESS: it is an input device
    std::string path = "/org/bluez/hci0/dev_" + words[0];
    std::replace(path.begin(), path.end(), ':', '_');
    MemoryBus::Get().Signal(
        path.c_str(), "org.freedesktop.DBus.Properties", "PropertiesChanged",
        g_variant_new_parsed("('org.bluez.Device1', "
                             "{'UUIDs': <['00001124-0000-1000-8000-00805f9b34fb']>}, @as [])"));
}
void Sql(const Texts& words) {  // another program at work on the device database
    sqlite3_open(DatabaseFile().c_str(), Out(otherProgram));
    EXPECT_EQ(sqlite3_exec(otherProgram.get(), words[0].c_str(), nullptr, nullptr, nullptr), 0)
        << sqlite3_errmsg(otherProgram.get());
}
void CountStatements(const Texts& /*words*/) {  // what SQLite was given since the last time
    Tell("given", std::to_string(std::exchange(statements, 0)));
}
void CountMemory(const Texts& /*words*/) {  // of connections, statements and texts
    database.reset();
    otherProgram.reset();
    sqlite3_reset_auto_extension();
    Tell("memory", std::to_string(sqlite3_memory_used()));
}
void MakeFile(const Texts& words) {  // in the folder of the database
    std::ofstream(Util::AppDataUtil::getDataPath() + words[0]) << "x";
}
void ListFiles(const Texts& /*words*/) {
    for (const auto& entry :
         std::filesystem::directory_iterator(Util::AppDataUtil::getDataPath())) {
        Tell("file", entry.path().filename().string());
    }
}
void ReplaceFolder(const Texts& /*words*/) {  // by a file
    std::string folder = Util::AppDataUtil::getDataPath();
    folder.pop_back();
    std::filesystem::remove_all(folder);
    std::ofstream(folder) << "not a folder";
}
void ShowKey(const Texts& words) {
    int number = 0;
    const bool isNumber = vconf_get_int(words[0].c_str(), &number) == 0;
    Tell("has", isNumber ? std::to_string(number) : Tv::TextKey(words[0]));
}
void DamageDatabase(const Texts& words) {  // its page of this number from the end
    std::fstream(DatabaseFile())
        .seekp(-4096 * Number(words[0]), std::ios::end)
        .write(std::string(4096, '\0').data(), 4096);
}

const std::map<std::string, std::function<void(const Texts& words)>> kVerbs = {
    {"fresh", StartAgain},
    {"key", SetKey},
    {"show-key", ShowKey},
    {"state", [](const Texts& words) { Tv::SetState(words[0].c_str(), Number(words[1])); }},
    {"feature", [](const Texts& words) { Tv::SetFeature(words[0], words[1]); }},
    {"no-features", [](const Texts&) { Tv::SetFeature("", std::nullopt); }},
    {"applications", SetApplications},
    {"metadata", [](const Texts& words) { Tv::SetMetadata(words[0], words[1]); }},
    {"launches-end-with", Tv::AnswerLaunches},
    // FUNCTION CODE [TIMES]
    {"fail",
     [](const Texts& w) { Recorder::Fail(w[0], Number(w[1]), w.size() > 2 ? Number(w[2]) : 1); }},
    {"wait-for-launches", WaitForLaunches},
    {"wait", [](const Texts&) { Tv::RunPending(); }},
    {"phone", AddPhone},
    {"bluetoothd", StartBluez},
    {"adapter-off",
     [](const Texts&) { Tv::Bluez().SetAdapterPowered(TvSim::Which::kFirst, false); }},
    {"connect", [](const Texts& words) { Tv::Bluez().FindPhone(words[0])->ConnectByItself(); }},
    {"input-device", TellHid},
    {"no-bonds", [](const Texts&) { isBondHeld = false; }},
    {"sql", Sql},
    {"statements", CountStatements},
    {"memory", CountMemory},
    {"file", MakeFile},
    {"files", ListFiles},
    {"file-for-folder", ReplaceFolder},
    {"damage-database", DamageDatabase},
};

// What a function answers and what it was told on the way, or why it threw.
Texts Answer(const Callable::Function& function, const Texts& words) {
    std::string answer;
    try {
        answer = function(words);
    } catch (const std::exception& e) {
        answer = std::string(" throws ") + e.what();
    } catch (const std::string& text) {
        answer = " throws " + text;
    }
    return answer.empty() ? Texts() : Texts{"=" + answer};
}

class UtilityTest : public PlatformTest, public testing::WithParamInterface<std::string> {
protected:
    UtilityTest() {
        sqlite3_auto_extension(reinterpret_cast<void (*)()>(OnOpened));
        StartAgain({});
    }
    ~UtilityTest() override {
        database.reset();
        otherProgram.reset();
        isBondHeld = true;
        sqlite3_reset_auto_extension();
        EXPECT_EQ(Tv::LaunchesExpected(), 0U);
    }

    static Texts Do(const Script::Step& step) {
        const Texts words = Script::Words(step.rest);
        if (step.verb == "printed") {  // how many lines the step before logged, the tracer's too
            return {std::to_string(Recorder::Printed().size())};
        }
        const Callable::Function* function = Utility::Find(step.verb);
        Recorder::ClearRecord();
        Texts answer;
        if (function != nullptr) {
            answer = Answer(*function, words);
        } else if (const auto verb = kVerbs.find(step.verb); verb != kVerbs.end()) {
            verb->second(words);
        } else {
            answer = {"an unknown step"};
        }
        Texts story = Recorder::All();
        story.insert(story.end(), answer.begin(), answer.end());
        for (std::string& line : story) {
            line = std::regex_replace(line, std::regex(Tv::Root()), "ROOT");
            line = std::regex_replace(line, std::regex("\n"), "\\n");
            if (line.size() > 500) {
                line = line.substr(0, 100) + "... (" + std::to_string(line.size()) + " characters)";
            }
        }
        return story;
    }
};

TEST_P(UtilityTest, DoesWhatTheScriptSays) {
    Script::Play(GetParam(), Do);
}

INSTANTIATE_TEST_SUITE_P(, UtilityTest, testing::ValuesIn(Script::FilesIn(SCRIPT_DIR)),
                         [](const auto& file) {
                             return std::filesystem::path(file.param).stem().string();
                         });

}  // namespace

// A TV may know a device without a bond; platform/linux never does.
// NOLINTBEGIN(bugprone-reserved-identifier): the names that the linker gives
extern "C" {
int __real_bt_adapter_get_bonded_device_info(const char* address, bt_device_info_s** info);
int __wrap_bt_adapter_get_bonded_device_info(const char* address, bt_device_info_s** info) {
    const int result = __real_bt_adapter_get_bonded_device_info(address, info);
    if (result == BT_ERROR_NONE) {
        (*info)->is_bonded = isBondHeld;
    }
    return result;
}
}
// NOLINTEND(bugprone-reserved-identifier)
