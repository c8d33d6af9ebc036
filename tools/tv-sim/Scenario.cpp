// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tv-sim/Scenario.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <sstream>

#include "common/AdvertisingData.h"
#include "tools/tv-sim/Address.h"
#include "tools/tv-sim/KeyReader.h"

namespace TvSim {
namespace {

constexpr int kHourMs = 3600 * 1000;

// COMPANY:HEXBYTES, several separated by ';'.
bool ParseManufacturerData(const std::string& text, ManufacturerData& data) {
    data.clear();
    std::istringstream items(text);
    for (std::string item; std::getline(items, item, ';');) {
        const std::size_t colon = item.find(':');
        const auto company = ParseNumber(item.substr(0, colon), 0, 0xFFFF);
        if (colon == std::string::npos || !company ||
            !ParseBytes(item.substr(colon + 1), data[static_cast<std::uint16_t>(*company)])) {
            return false;
        }
    }
    return true;
}

bool ParseConnect(const std::string& text, ConnectAnswer& answer) {
    if (text == "accept" || text == "never") {
        answer.kind = text == "accept" ? ConnectAnswer::Kind::kAccept : ConnectAnswer::Kind::kNever;
        return true;
    }
    const std::size_t colon = text.find(':');
    if (colon == std::string::npos ||
        g_dbus_is_interface_name(text.substr(0, colon).c_str()) == 0) {
        return false;
    }
    answer = {ConnectAnswer::Kind::kRefuse, text.substr(0, colon), text.substr(colon + 1)};
    return true;
}

void ReadAdapter(KeyReader& keys, AdapterPlan& adapter) {
    keys.Read("address", "an address",
              [&](const std::string& text) { return ParseAddress(text, adapter.address); });
    keys.Read("name", adapter.name);
    keys.Read("number", adapter.number, 0, 999);
    keys.Read("present", adapter.present);
    keys.Read("powered", adapter.powered);
    keys.Read("appears-after-ms", adapter.appearsAfterMs, 0, kHourMs);
    keys.Read("powers-on-after-ms", adapter.powersOnAfterMs, 0, kHourMs);
    keys.Read("powers-off-after-ms", adapter.powersOffAfterMs, 0, kHourMs);
    keys.Read("pulled-after-ms", adapter.pulledAfterMs, 0, kHourMs);
    keys.Read("forgets-after-ms", adapter.forgetsAfterMs, 1, kHourMs);
    keys.Read("discovery-takes-ms", adapter.discoveryTakesMs, 0, kHourMs);
    keys.Read("others-discover", adapter.othersDiscover);
    keys.Read("knows-pattern", adapter.knowsPattern);
}

void ReadFaults(KeyReader& keys, CallFaults& faults) {
    std::vector<std::string> silentMethods;
    keys.Read("silent-methods", silentMethods);
    faults.silentMethods.insert(silentMethods.begin(), silentMethods.end());
    Pairs refusedOnce;
    keys.Read("refused-once", ':', refusedOnce);
    faults.refusedOnce.insert(refusedOnce.begin(), refusedOnce.end());
    Pairs answersAfter;
    keys.Read("answers-after", ':', answersAfter);
    for (const auto& [method, text] : answersAfter) {
        const std::optional<long> ms = ParseNumber(text, 0, kHourMs);
        if (!ms) {
            keys.Fail("answers-after", "'" + text + "' is not a number of milliseconds");
        }
        faults.answersAfterMs[method] = static_cast<int>(ms.value_or(0));
    }
}

void ReadAdvertising(KeyReader& keys, PhonePlan& phone) {
    keys.Read("advertises", "true, false or identity", [&](const std::string& text) {
        phone.advertises = text != "false";
        phone.hasApplication = text != "identity";
        if (!phone.hasApplication) {
            phone.manufacturerData.clear();
        }
        return text == "true" || text == "false" || text == "identity";
    });
    keys.Read("advertise-after-ms", phone.advertiseAfterMs, 0, kHourMs);
    keys.Read("advertise-every-ms", phone.advertiseEveryMs, 1, kHourMs);
    keys.Read("advertise-count", phone.advertiseCount, 0, 1000000);
    keys.Read("connectable", phone.connectable);
    keys.Read("advertise-from", "public, random or an address", [&](const std::string& text) {
        if (text == "public") {
            phone.advertiseFrom = phone.address;
        }
        return text == "public" || text == "random" || ParseAddress(text, phone.advertiseFrom);
    });
    keys.Read("manufacturer-data", "COMPANY:HEXBYTES;...", [&](const std::string& text) {
        return ParseManufacturerData(text, phone.manufacturerData);
    });
}

void ReadPhone(KeyReader& keys, const std::string& id, Scenario& scenario) {
    std::string address;
    keys.Read("address", "an address",
              [&](const std::string& text) { return ParseAddress(text, address); });
    if (address.empty()) {
        keys.Fail("address", "is missing");
    }
    for (const PhonePlan& other : scenario.phones) {
        if (other.address == address) {
            keys.Fail("address", "is that of the phone " + other.id);
        }
    }
    PhonePlan phone = MakePhone(id, address);
    keys.Read("name", phone.name);
    keys.Read("registered", "on, off or no", {"on", "off", "no"}, phone.registered);
    keys.Read("adapter", "first or second", [&](const std::string& text) {
        phone.adapter = text == "second" ? Which::kSecond : Which::kFirst;
        return text == "first" || text == "second";
    });
    keys.Read("bonded", phone.bonded);
    keys.Read("class", phone.deviceClass, 0, 0xFFFFFF);
    keys.Read("modalias", phone.modalias);
    ReadAdvertising(keys, phone);
    keys.Read("connect", "accept, never or ERRORNAME:MESSAGE",
              [&](const std::string& text) { return ParseConnect(text, phone.connect); });
    keys.Read("first-connect", "as connect", [&](const std::string& text) {
        return ParseConnect(text, phone.firstConnect.emplace());
    });
    keys.Read("link-goes-down", phone.linkGoesDown);
    keys.Read("connect-after-ms", phone.connectAfterMs, 0, kHourMs);
    keys.Read("connects-by-itself-after-ms", phone.connectsByItselfAfterMs, 0, kHourMs);
    keys.Read("disconnects-after-ms", phone.disconnectsAfterMs, 0, kHourMs);
    keys.Read("player", "none or a player's status",
              {"none", "playing", "paused", "stopped", "forward-seek", "reverse-seek", "error"},
              phone.playerStatus);
    keys.Read("player-after-ms", phone.playerAfterMs, 0, kHourMs);
    keys.Read("status-after-ms", phone.statusAfterMs, 0, kHourMs);
    keys.Read("plays-on-play", phone.playsOnPlay);
    scenario.phones.push_back(std::move(phone));
}

void ReadStrangers(KeyReader& keys, StrangersPlan& strangers) {
    strangers.count = 500;
    keys.Read("count", strangers.count, 0, 100000);
    keys.Read("every-ms", strangers.everyMs, 10, kHourMs);
    keys.Read("rotate-address-every", strangers.rotateAddressEvery, 0, 1000000);
    keys.Read("connectable", strangers.connectable);
    keys.Read("manufacturer-data", "random or COMPANY:HEXBYTES;...", [&](const std::string& text) {
        strangers.randomData = text == "random";
        return strangers.randomData || ParseManufacturerData(text, strangers.manufacturerData);
    });
}

void ReadTv(KeyReader& keys, TvPlan& tv) {
    keys.Read("zemi", tv.zemi);
    keys.Read("wakeup-reason", tv.wakeupReason, 0, 1000);
    keys.Read("ambient-mode", tv.ambientMode, 0, 1000);
    keys.Read("ambient-type", tv.ambientType, 0, 1000);
    keys.Read("features", '=', tv.features);
    keys.Read("keys", '=', tv.keys);
}

// The wake-ups, and the settings before them: events with a phone as their key for now.
void ReadWake(KeyReader& keys, std::vector<TvEvent>& events) {
    int count = 1;
    int everyMs = 0;
    Pairs before;
    keys.Read("count", count, 1, 1000);
    keys.Read("every-ms", everyMs, 0, kHourMs);
    keys.Read("before", ':', before);
    std::vector<TvEvent> wakeUps;
    for (const auto& [phone, value] : before) {
        if (value != "on" && value != "off") {
            keys.Fail("before", "a phone's setting is PHONE:on or PHONE:off");
        }
        wakeUps.push_back({0, TvEvent::Kind::kUpdate, phone, value == "on" ? "Y" : "N"});
    }
    for (int i = 0; i < count; ++i) {
        wakeUps.push_back({i * everyMs, TvEvent::Kind::kWake, "", ""});
    }
    events.insert(events.begin(), wakeUps.begin(), wakeUps.end());
}

std::string TakeWord(std::string& text) {
    const std::size_t end = text.find(' ');
    std::string word = text.substr(0, end);
    text = end == std::string::npos ? "" : text.substr(end + 1);
    return word;
}

bool ParseEvent(std::string text, TvEvent& event) {
    using Kind = TvEvent::Kind;
    static const std::map<std::string, Kind> kKinds = {{"wake", Kind::kWake},
                                                       {"update", Kind::kUpdate},
                                                       {"set", Kind::kSet},
                                                       {"unset", Kind::kUnset},
                                                       {"check", Kind::kCheck}};
    const auto kind = kKinds.find(TakeWord(text));
    if (kind == kKinds.end()) {
        return false;
    }
    event.kind = kind->second;
    const bool hasKey = event.kind != Kind::kWake && event.kind != Kind::kUpdate;
    if (hasKey) {
        event.key = TakeWord(text);
    }
    event.text = text;
    const bool hasText = event.kind != Kind::kWake && event.kind != Kind::kUnset;
    return event.key.empty() != hasKey && (hasText || text.empty());
}

void ReadEvents(KeyReader& keys, std::vector<TvEvent>& events) {
    for (const std::string& key : keys.Keys()) {
        const std::optional<long> afterMs = ParseNumber(key, 0, kHourMs);
        std::vector<std::string> texts;
        keys.Read(key.c_str(), texts);
        if (!afterMs) {
            keys.Fail(key, "is not a number of milliseconds");
        }
        for (const std::string& text : texts) {
            TvEvent event;
            event.afterMs = static_cast<int>(afterMs.value_or(0));
            if (!ParseEvent(text, event)) {
                keys.Fail(key, "'" + text + "' is not an event");
            }
            events.push_back(event);
        }
    }
}

void ReadExpectation(KeyReader& keys, Expectation& expect) {
    keys.Read("until", "log:TEXT or sim:TEXT", [&](const std::string& text) {
        const std::string source = text.substr(0, 4);
        expect.untilInLog = source == "log:";
        expect.until = text.substr(source.size());
        return !expect.until.empty() && (expect.untilInLog || source == "sim:");
    });
    keys.Read("within-ms", expect.withinMs, 1, kHourMs);
    keys.Read("settle-ms", expect.settleMs, 0, kHourMs);
    keys.Read("log", expect.log);
    keys.Read("sim", expect.sim);
    keys.Read("never", expect.never);
    std::vector<std::string> exactly;
    keys.Read("exactly", exactly);
    if (!exactly.empty()) {
        expect.exactly = exactly;
    }
    keys.Read("connected", expect.connected);
    keys.Read("playing", expect.playing);
}

void ReadSection(GKeyFile* file, const std::string& section, Scenario& scenario,
                 std::string& error) {
    KeyReader keys(file, section, error);
    if (section == "scenario") {
        keys.Read("description", scenario.description);
    } else if (section == "adapter") {
        ReadAdapter(keys, scenario.adapter);
        ReadFaults(keys, scenario.faults);
    } else if (section == "adapter second") {
        scenario.secondAdapter.present = true;
        ReadAdapter(keys, scenario.secondAdapter);
    } else if (section == "strangers") {
        ReadStrangers(keys, scenario.strangers);
    } else if (section == "tv") {
        ReadTv(keys, scenario.tv);
    } else if (section == "wake") {
        ReadWake(keys, scenario.events);
    } else if (section == "events") {
        ReadEvents(keys, scenario.events);
    } else if (section == "expect") {
        ReadExpectation(keys, scenario.expect);
    } else if (section.size() > 6 && section.compare(0, 6, "phone ") == 0) {
        ReadPhone(keys, section.substr(6), scenario);
    } else if (error.empty()) {
        error = "[" + section + "]: is not a section of a scenario";
    }
    keys.Finish();
}

// What one section says and another one must fit, whichever comes first: every phone that is named
// is there.
void CheckWhole(const Scenario& scenario, std::string& error) {
    const AdapterPlan& second = scenario.secondAdapter;
    if (error.empty() && second.number == scenario.adapter.number &&
        (second.present || second.appearsAfterMs > 0)) {
        error = "[adapter] number: is that of the second adapter";
    }
    const auto check = [&](const char* where, const std::string& phone) {
        if (error.empty() && !phone.empty() && scenario.FindPhone(phone) == nullptr) {
            error = std::string(where) + ": there is no phone '" + phone + "'";
        }
    };
    check("[expect] connected", scenario.expect.connected.value_or(""));
    check("[expect] playing", scenario.expect.playing.value_or(""));
}

// Puts addresses in the place of {PHONE}.
void Expand(const Scenario& scenario, std::string& text) {
    for (const PhonePlan& phone : scenario.phones) {
        const std::string mark = "{" + phone.id + "}";
        for (std::size_t at = text.find(mark); at != std::string::npos; at = text.find(mark, at)) {
            text.replace(at, mark.size(), phone.address);
        }
    }
}

// Puts in what is said in short.
void Complete(Scenario& scenario, std::string& error) {
    Expectation& expect = scenario.expect;
    std::vector<std::string> none;
    Expand(scenario, expect.until);
    for (auto* texts :
         {&expect.log, &expect.sim, &expect.never, expect.exactly ? &*expect.exactly : &none}) {
        for (std::string& text : *texts) {
            Expand(scenario, text);
        }
    }
    for (TvEvent& event : scenario.events) {
        if (event.kind == TvEvent::Kind::kUpdate && !event.key.empty()) {
            if (scenario.FindPhone(event.key) == nullptr && error.empty()) {
                error = "[wake] before: there is no phone '" + event.key + "'";
            }
            event.text = R"({"btMac":"{)" + event.key + R"(}","value":")" + event.text + R"("})";
            event.key.clear();
        }
        Expand(scenario, event.text);
    }
    std::stable_sort(scenario.events.begin(), scenario.events.end(),
                     [](const TvEvent& a, const TvEvent& b) { return a.afterMs < b.afterMs; });
}

}  // namespace

const PhonePlan* Scenario::FindPhone(const std::string& id) const {
    const auto found = std::find_if(phones.begin(), phones.end(),
                                    [&](const PhonePlan& phone) { return phone.id == id; });
    return found == phones.end() ? nullptr : &*found;
}

PhonePlan MakePhone(const std::string& id, const std::string& address) {
    PhonePlan phone;
    phone.id = id;
    phone.name = id;
    phone.address = address;
    std::uint64_t seed = 0;
    for (const std::uint8_t byte : ParseAddressBytes(address)) {
        seed = seed * 256 + byte;
    }
    phone.advertiseFrom = PrivateAddress(seed);
    // One byte more than is needed.
    phone.manufacturerData[kNoCompany] = MakePhoneContent(address);
    phone.manufacturerData[kNoCompany].push_back(0);
    return phone;
}

std::optional<Scenario> ReadScenario(const std::string& file, std::string& error) {
    const GKeyFilePtr keyFile(g_key_file_new());
    GErrorPtr failure;
    if (g_key_file_load_from_file(keyFile.get(), file.c_str(), G_KEY_FILE_NONE, Out(failure)) ==
        FALSE) {
        error = file + ": " + failure->message;
        return std::nullopt;
    }
    Scenario scenario;
    scenario.name = std::filesystem::path(file).stem().string();
    std::string problem;
    const GStrvPtr sections(g_key_file_get_groups(keyFile.get(), nullptr));
    for (char** section = sections.get(); *section != nullptr; ++section) {
        ReadSection(keyFile.get(), *section, scenario, problem);
    }
    if (g_key_file_has_group(keyFile.get(), "wake") == FALSE) {
        ReadSection(keyFile.get(), "wake", scenario, problem);
    }
    CheckWhole(scenario, problem);
    Complete(scenario, problem);
    if (!problem.empty()) {
        error = file + ": " + problem;
        return std::nullopt;
    }
    return scenario;
}

}  // namespace TvSim
