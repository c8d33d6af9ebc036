// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tv-sim/ScenarioFile.h"

#include <algorithm>

#include "tools/tv-sim/Address.h"
#include "tools/tv-sim/KeyReader.h"

namespace TvSim {
namespace {

constexpr int kHourMs = 3600 * 1000;
// Reserved for tests; nobody's product sends it.
constexpr std::uint16_t kTestCompany = 0xFFFF;

using Pairs = std::vector<std::pair<std::string, std::string>>;

bool ParseAddress(const std::string& text, std::string& address) {
    if (!IsAddress(text)) {
        return false;
    }
    address = UpperCase(text);
    return true;
}

// COMPANY:HEXBYTES, several separated by ';'.
bool ParseManufacturerData(const std::string& text, ManufacturerData& data) {
    data.clear();
    std::size_t start = 0;
    while (start < text.size()) {
        const std::size_t end = std::min(text.find(';', start), text.size());
        const std::string item = text.substr(start, end - start);
        const std::size_t colon = item.find(':');
        long company = 0;
        std::vector<unsigned char> bytes;
        if (colon == std::string::npos || !ParseNumber(item.substr(0, colon), 0, 0xFFFF, company) ||
            !ParseBytes(item.substr(colon + 1), bytes)) {
            return false;
        }
        data[static_cast<std::uint16_t>(company)] = bytes;
        start = end + 1;
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

bool ParseRegistered(const std::string& text, PhonePlan::Registered& registered) {
    if (text == "on") {
        registered = PhonePlan::Registered::kOn;
    } else if (text == "off") {
        registered = PhonePlan::Registered::kOff;
    } else if (text == "no") {
        registered = PhonePlan::Registered::kNo;
    } else {
        return false;
    }
    return true;
}

bool ParsePlayer(const std::string& text, PhonePlan& phone) {
    static const std::vector<std::string> kStatuses = {"playing",      "paused",       "stopped",
                                                       "forward-seek", "reverse-seek", "error"};
    phone.hasPlayer = text != "none";
    if (phone.hasPlayer) {
        phone.playerStatus = text;
    }
    return !phone.hasPlayer ||
           std::find(kStatuses.begin(), kStatuses.end(), text) != kStatuses.end();
}

// KEY<separator>VALUE items.
void ReadPairs(KeyReader& keys, const char* key, char separator, Pairs& pairs) {
    std::vector<std::string> items;
    keys.Read(key, items);
    for (const std::string& item : items) {
        const std::size_t at = item.find(separator);
        if (at == std::string::npos || at == 0) {
            keys.Fail(key, "'" + item + "' is not NAME" + std::string(1, separator) + "VALUE");
            return;
        }
        pairs.emplace_back(item.substr(0, at), item.substr(at + 1));
    }
}

void ReadAdapter(KeyReader& keys, AdapterPlan& adapter) {
    keys.Read("address", "an address",
              [&](const std::string& text) { return ParseAddress(text, adapter.address); });
    keys.Read("name", adapter.name);
    keys.Read("present", adapter.present);
    keys.Read("powered", adapter.powered);
    keys.Read("appears-after-ms", adapter.appearsAfterMs, 0, kHourMs);
    keys.Read("powers-on-after-ms", adapter.powersOnAfterMs, 0, kHourMs);
    keys.Read("pulled-after-ms", adapter.pulledAfterMs, 0, kHourMs);
    keys.Read("forgets-after-ms", adapter.forgetsAfterMs, 1, kHourMs);
    keys.Read("discovery-takes-ms", adapter.discoveryTakesMs, 0, kHourMs);
    keys.Read("knows-pattern", adapter.knowsPattern);
    keys.Read("silent-methods", adapter.silentMethods);
    ReadPairs(keys, "refused-once", ':', adapter.refusedOnce);
}

void ReadAdvertising(KeyReader& keys, PhonePlan& phone) {
    keys.Read("advertises", phone.advertises);
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
    keys.Read("registered", "on, off or no",
              [&](const std::string& text) { return ParseRegistered(text, phone.registered); });
    keys.Read("bonded", phone.bonded);
    int deviceClass = static_cast<int>(phone.deviceClass);
    keys.Read("class", deviceClass, 0, 0xFFFFFF);
    phone.deviceClass = static_cast<std::uint32_t>(deviceClass);
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
              [&](const std::string& text) { return ParsePlayer(text, phone); });
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
    ReadPairs(keys, "features", '=', tv.features);
    ReadPairs(keys, "keys", '=', tv.keys);
}

void ReadWake(KeyReader& keys, WakePlan& wake) {
    Pairs pairs;
    ReadPairs(keys, "before", ':', pairs);
    for (const auto& [phone, value] : pairs) {
        if (value != "on" && value != "off") {
            keys.Fail("before", "a phone's setting is PHONE:on or PHONE:off");
        }
        wake.updates.emplace_back(phone, value == "on");
    }
}

void ReadExpectation(KeyReader& keys, Expectation& expect) {
    keys.Read("until", "log:TEXT or sim:TEXT", [&](const std::string& text) {
        const std::string source = text.substr(0, 4);
        expect.untilSource =
            source == "log:" ? Expectation::Source::kServiceLog : Expectation::Source::kSimulator;
        expect.until = text.size() > 4 ? text.substr(4) : "";
        return !expect.until.empty() && (source == "log:" || source == "sim:");
    });
    keys.Read("within-ms", expect.withinMs, 1, kHourMs);
    keys.Read("settle-ms", expect.settleMs, 0, kHourMs);
    keys.Read("log", expect.log);
    keys.Read("never", expect.never);
    const auto readPhone = [&](const char* key, std::optional<std::string>& target) {
        keys.Read(key, "a phone", [&](const std::string& text) {
            target = text;
            return true;
        });
    };
    readPhone("connected", expect.connected);
    readPhone("playing", expect.playing);
}

void ReadSection(GKeyFile* file, const std::string& section, Scenario& scenario,
                 std::string& error) {
    KeyReader keys(file, section, error);
    if (section == "scenario") {
        keys.Read("description", scenario.description);
    } else if (section == "adapter") {
        ReadAdapter(keys, scenario.adapter);
    } else if (section == "strangers") {
        ReadStrangers(keys, scenario.strangers);
    } else if (section == "tv") {
        ReadTv(keys, scenario.tv);
    } else if (section == "wake") {
        ReadWake(keys, scenario.wake);
    } else if (section == "expect") {
        ReadExpectation(keys, scenario.expect);
    } else if (section.size() > 6 && section.compare(0, 6, "phone ") == 0) {
        ReadPhone(keys, section.substr(6), scenario);
    } else if (error.empty()) {
        error = "[" + section + "]: is not a section of a scenario";
    }
    keys.Finish();
}

// Names of phones that stand where sections before or after theirs speak of them.
void CheckPhoneNames(const Scenario& scenario, std::string& error) {
    std::vector<std::pair<std::string, std::string>> mentioned = {
        {"[expect] connected", scenario.expect.connected.value_or("")},
        {"[expect] playing", scenario.expect.playing.value_or("")}};
    for (const auto& [phone, on] : scenario.wake.updates) {
        mentioned.emplace_back("[wake] before", phone);
    }
    for (const auto& [where, phone] : mentioned) {
        if (error.empty() && !phone.empty() && scenario.FindPhone(phone) == nullptr) {
            error = where;
            error.append(": there is no phone '").append(phone).append("'");
        }
    }
}

std::string NameOfFile(const std::string& file) {
    const GStringPtr base(g_path_get_basename(file.c_str()));
    const std::string name = base.get();
    const std::size_t dot = name.rfind('.');
    return dot == std::string::npos || dot == 0 ? name : name.substr(0, dot);
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
    const std::vector<unsigned char> bytes = AddressBytes(address);
    std::uint64_t seed = 0;
    for (const unsigned char byte : bytes) {
        seed = seed * 256 + byte;
    }
    phone.advertiseFrom = PrivateAddress(seed);
    std::vector<unsigned char> data(16, 0);
    std::copy(bytes.begin(), bytes.end(), data.begin() + 7);
    phone.manufacturerData[kTestCompany] = data;
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
    scenario.name = NameOfFile(file);
    std::string problem;
    const GStrvPtr sections(g_key_file_get_groups(keyFile.get(), nullptr));
    for (char** section = sections.get(); *section != nullptr; ++section) {
        ReadSection(keyFile.get(), *section, scenario, problem);
    }
    CheckPhoneNames(scenario, problem);
    if (!problem.empty()) {
        error = file + ": " + problem;
        return std::nullopt;
    }
    return scenario;
}

}  // namespace TvSim
