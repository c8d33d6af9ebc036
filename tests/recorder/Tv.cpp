// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tests/recorder/Tv.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <deque>
#include <filesystem>
#include <fstream>
#include <memory>
#include <mutex>

#include "common/Source.h"
#include "platform/bluetooth.h"
#include "platform/config_store.h"
#include "platform/linux/base/RootPath.h"
#include "platform/linux/config/FeatureFile.h"
#include "platform/linux/config/PlatformState.h"
#include "tests/memory_bus/MemoryBus.h"
#include "tests/memory_bus/VirtualTime.h"
#include "tests/recorder/Recorder.h"

namespace Tv {

namespace {

namespace fs = std::filesystem;
using Platform::ConfigStore;
using Platform::ConfigType;

constexpr char kReadyEvent[] = "/tmp/.nivoui_ready";
constexpr char kNoService[] = "org.freedesktop.DBus.Error.ServiceUnknown";

// In memory if possible.
std::string& RootFolder() {
    static std::string& root = *[] {
        const char* given = std::getenv("TMPDIR");
        const char* parent = access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
        return new std::string((given != nullptr ? given : parent) +
                               std::string("/bt-autoconnect-test-XXXXXX"));
    }();
    return root;
}

[[gnu::constructor(101)]] void MakeRoot() {
    std::string& root = RootFolder();
    if (mkdtemp(root.data()) == nullptr || chmod(root.c_str(), 0755) != 0 ||
        setenv("TV_ROOT", root.c_str(), 1) != 0) {
        std::abort();
    }
}

[[gnu::destructor(101)]] void RemoveRoot() {
    std::error_code ignored;
    fs::remove_all(RootFolder(), ignored);
}

struct Surroundings {
    Surroundings() {
        VirtualTime::Begin([] { std::abort(); });
        bus.answerSyncCall = [this](const auto& call, std::string& error) {
            return AnswerSyncCall(call, error);
        };
        bus.treat = [this](const auto& call) { return Treat(call); };
        // As long as one key is watched the platform watches the file; the kernel takes
        // milliseconds to end that.
        vconf_notify_key_changed(
            "db/tests", [](keynode_t* /*node*/, void* /*data*/) {}, nullptr);
    }

    // The bus itself, and an application that is launched; any thread.
    GVariantPtr AnswerSyncCall(const MemoryBus::CallInfo& call, std::string& error) {
        const std::lock_guard<std::mutex> lock(mutex);
        if (call.method == "ListActivatableNames") {
            GVariantBuilder names;
            g_variant_builder_init(&names, G_VARIANT_TYPE("as"));
            for (const auto& application : applications) {
                g_variant_builder_add(&names, "s", application.first.c_str());
            }
            return MemoryBus::Keep(g_variant_new("(as)", &names));
        }
        if (call.method == "NameHasOwner") {
            const char* name = nullptr;
            g_variant_get(call.arguments.get(), "(&s)", &name);
            return MemoryBus::Keep(g_variant_new("(b)", Runs(name) ? TRUE : FALSE));
        }
        if (!applications.empty() && !Runs(call.destination)) {
            error = kNoService;
        }
        return {};
    }
    MemoryBus::Treatment Treat(const MemoryBus::CallInfo& call) {
        MemoryBus::Treatment treatment;
        if (call.method == "ActivateAction") {
            treatment.isDelivered = false;
            if (!launches.empty()) {
                treatment.error = launches.front();
                launches.pop_front();
            }
        }
        return treatment;
    }
    bool Runs(const std::string& application) {
        const auto found = applications.find(application);
        return found != applications.end() && found->second;
    }

    MemoryBus bus;
    std::mutex mutex;  // guards `applications`
    std::map<std::string, bool> applications;
    std::deque<std::string> launches;
    std::unique_ptr<TvSim::Simulator> bluez;
};

Surroundings& Around() {
    static Surroundings surroundings;
    return surroundings;
}

void ForgetKeys() {
    const auto entries = ConfigStore::Instance().List();
    for (const auto& entry : *entries) {
        static_cast<void>(ConfigStore::Instance().Unset(entry.key));
    }
}

}  // namespace

void Reset() {
    Around().bluez.reset();
    Around().launches.clear();
    SetApplications({});
    ForgetKeys();
    SetFeature("", std::nullopt);
    SetRaised(kReadyEvent, true);
    Recorder::Reset();
    RunPending();
    Recorder::Reset();
}

const std::string& Root() {
    return RootFolder();
}

void Advance(int milliseconds) {
    bool isOver = false;
    const Timer end = Timer::Once(milliseconds, [&] { isOver = true; });
    while (!isOver) {
        g_main_context_iteration(nullptr, TRUE);
    }
}

void RunPending() {
    while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
    }
}

void SetKey(const std::string& key, const std::optional<Value>& value) {
    if (!value) {
        static_cast<void>(ConfigStore::Instance().Unset(key));
        return;
    }
    Platform::ConfigValue stored;
    if (const auto* text = std::get_if<std::string>(&*value)) {
        stored.text = *text;
    } else if (const auto* flag = std::get_if<Flag>(&*value)) {
        stored = {ConfigType::kBool, {}, static_cast<int>(*flag)};
    } else {
        stored = {ConfigType::kInt, {}, std::get<int>(*value)};
    }
    static_cast<void>(ConfigStore::Instance().Store(key, stored));
}

std::string TextKey(const std::string& key) {
    return ConfigStore::Instance().GetString(key).value_or("(none)");
}

void SetState(const char* name, int number) {
    if (State(name) != number) {
        Platform::SetState(name, number);
    }
}

int State(const char* name) {
    return Platform::GetState(name);
}

void SetFeature(const std::string& key, const std::optional<std::string>& value) {
    auto& features = Platform::FeatureFile::Instance();
    if (value && features.GetText(key) != value) {
        static_cast<void>(features.Set(key, *value));
    } else if (!value) {
        fs::remove(Platform::SettingsFolder() + "/features.conf");
    }
}

void SetApplications(const std::map<std::string, bool>& applications) {
    const std::lock_guard<std::mutex> lock(Around().mutex);
    Around().applications = applications;
}

void SetMetadata(const std::string& application, const std::string& lines) {
    const std::string folder = Platform::SettingsFolder() + "/applications";
    fs::create_directories(folder);
    std::ofstream(folder + "/" + application + ".conf") << "[metadata]\n" << lines;
}

void AnswerLaunches(const std::vector<std::string>& errors) {
    Around().launches.assign(errors.begin(), errors.end());
}

std::size_t LaunchesExpected() {
    return Around().launches.size();
}

void SetRaised(const std::string& event, bool raised) {
    const fs::path file = Platform::RunFolder() + event;
    fs::create_directories(file.parent_path());
    if (raised) {
        std::ofstream(file).flush();
    } else {
        fs::remove(file);
    }
}

void StartBluez(const std::vector<TvSim::PhonePlan>& phones, const TvSim::AdapterPlan& adapter) {
    TvSim::Scenario scenario;
    scenario.adapter = adapter;
    scenario.phones = phones;
    Around().bluez.reset();
    Around().bluez = std::make_unique<TvSim::Simulator>(scenario, MemoryBus::Connection());
    // The platform begins to look for it when it is asked for the first time.
    bt_adapter_state_e state = BT_ADAPTER_DISABLED;
    bt_adapter_get_state(&state);
    // A little later it powers its adapter on.
    Advance(100);
}

TvSim::Simulator& Bluez() {
    return *Around().bluez;
}

TvSim::PhonePlan QuietPhone(const std::string& address) {
    TvSim::PhonePlan plan = TvSim::MakePhone(address, address);
    plan.advertises = false;
    return plan;
}

}  // namespace Tv
