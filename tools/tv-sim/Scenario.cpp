// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tv-sim/Scenario.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <set>
#include <sstream>

#include "common/CHandle.h"
#include "tools/tv-sim/Address.h"

namespace TvSim {
namespace {

constexpr int kHourMs = 3600 * 1000;
// Reserved for tests; nobody's product sends it.
constexpr std::uint16_t kTestCompany = 0xFFFF;

// The whole text as a decimal or 0x number; empty when it is not one or is out of range.
std::optional<long> ParseNumber(const std::string& text, long least, long most) {
    const bool hexadecimal = text.compare(0, 2, "0x") == 0 || text.compare(0, 2, "0X") == 0;
    char* end = nullptr;
    errno = 0;
    const long value = std::strtol(text.c_str(), &end, hexadecimal ? 16 : 10);
    if (text.empty() || *end != '\0' || errno != 0 || value < least || value > most) {
        return std::nullopt;
    }
    return value;
}

// Reads the keys of one section. A key that is absent leaves its target as it is; the first one
// that is malformed, and by Finish() the first one that nobody asked for, sets the error.
class KeyReader {
public:
    // `error` is set once, when it is empty. Both must outlive the reader.
    KeyReader(GKeyFile* file, std::string section, std::string& error)
        : m_file(file), m_section(std::move(section)), m_error(error) {}

    // `parse` answers whether the text was fine; `wanted` says what is.
    void Read(const char* key, const std::string& wanted,
              const std::function<bool(const std::string& text)>& parse) {
        m_known.insert(key);
        if (g_key_file_has_key(m_file, m_section.c_str(), key, nullptr) == FALSE) {
            return;
        }
        const GStringPtr text(g_key_file_get_string(m_file, m_section.c_str(), key, nullptr));
        if (text == nullptr) {
            Fail(key, "holds a malformed text");
        } else if (!parse(text.get())) {
            Fail(key, "'" + std::string(text.get()) + "' is not " + wanted);
        }
    }

    // Any text.
    template <typename Text>
    void Read(const char* key, Text& target) {
        Read(key, "", [&](const std::string& text) {
            target = text;
            return true;
        });
    }

    void Read(const char* key, const char* wanted, const std::set<std::string>& values,
              std::string& target) {
        Read(key, wanted, [&](const std::string& text) {
            target = text;
            return values.count(text) != 0;
        });
    }

    void Read(const char* key, bool& target) {
        Read(key, "true or false", [&](const std::string& text) {
            target = text == "true";
            return text == "true" || text == "false";
        });
    }

    template <typename Number>
    void Read(const char* key, Number& target, long least, long most) {
        Read(key, "a number from " + std::to_string(least) + " to " + std::to_string(most),
             [&](const std::string& text) {
                 const std::optional<long> number = ParseNumber(text, least, most);
                 target = static_cast<Number>(number.value_or(least));
                 return number.has_value();
             });
    }

    // Items separated by ';'.
    void Read(const char* key, std::vector<std::string>& target) {
        m_known.insert(key);
        const GStrvPtr list(
            g_key_file_get_string_list(m_file, m_section.c_str(), key, nullptr, nullptr));
        if (list != nullptr) {
            target.assign(list.get(), list.get() + g_strv_length(list.get()));
        }
    }

    // NAME<separator>VALUE items, separated by ';'.
    void Read(const char* key, char separator, Pairs& pairs) {
        std::vector<std::string> items;
        Read(key, items);
        for (const std::string& item : items) {
            const std::size_t at = item.find(separator);
            if (at == std::string::npos || at == 0) {
                Fail(key, "'" + item + "' is not NAME" + std::string(1, separator) + "VALUE");
                return;
            }
            pairs.emplace_back(item.substr(0, at), item.substr(at + 1));
        }
    }

    void Finish() {
        const GStrvPtr keys(g_key_file_get_keys(m_file, m_section.c_str(), nullptr, nullptr));
        for (char** key = keys.get(); key != nullptr && *key != nullptr; ++key) {
            if (m_known.count(*key) == 0) {
                Fail(*key, "is not a key of this section");
            }
        }
    }

    void Fail(const std::string& key, const std::string& problem) {
        if (m_error.empty()) {
            m_error = "[" + m_section + "] " + key + ": " + problem;
        }
    }

private:
    GKeyFile* m_file;  // not owned
    std::string m_section;
    std::string& m_error;
    std::set<std::string> m_known;
};

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
    keys.Read("present", adapter.present);
    keys.Read("powered", adapter.powered);
    keys.Read("appears-after-ms", adapter.appearsAfterMs, 0, kHourMs);
    keys.Read("powers-on-after-ms", adapter.powersOnAfterMs, 0, kHourMs);
    keys.Read("pulled-after-ms", adapter.pulledAfterMs, 0, kHourMs);
    keys.Read("forgets-after-ms", adapter.forgetsAfterMs, 1, kHourMs);
    keys.Read("discovery-takes-ms", adapter.discoveryTakesMs, 0, kHourMs);
    keys.Read("knows-pattern", adapter.knowsPattern);
    keys.Read("silent-methods", adapter.silentMethods);
    keys.Read("refused-once", ':', adapter.refusedOnce);
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
    keys.Read("registered", "on, off or no", {"on", "off", "no"}, phone.registered);
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

void ReadWake(KeyReader& keys, Pairs& updates) {
    keys.Read("before", ':', updates);
    for (const auto& [phone, value] : updates) {
        if (value != "on" && value != "off") {
            keys.Fail("before", "a phone's setting is PHONE:on or PHONE:off");
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
    keys.Read("never", expect.never);
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
    } else if (section == "strangers") {
        ReadStrangers(keys, scenario.strangers);
    } else if (section == "tv") {
        ReadTv(keys, scenario.tv);
    } else if (section == "wake") {
        ReadWake(keys, scenario.updates);
    } else if (section == "expect") {
        ReadExpectation(keys, scenario.expect);
    } else if (section.size() > 6 && section.compare(0, 6, "phone ") == 0) {
        ReadPhone(keys, section.substr(6), scenario);
    } else if (error.empty()) {
        error = "[" + section + "]: is not a section of a scenario";
    }
    keys.Finish();
}

// Every phone that a section names must be there, whichever section comes first.
void CheckPhoneNames(const Scenario& scenario, std::string& error) {
    const auto check = [&](const char* where, const std::string& phone) {
        if (error.empty() && !phone.empty() && scenario.FindPhone(phone) == nullptr) {
            error = std::string(where) + ": there is no phone '" + phone + "'";
        }
    };
    check("[expect] connected", scenario.expect.connected.value_or(""));
    check("[expect] playing", scenario.expect.playing.value_or(""));
    for (const auto& [phone, setting] : scenario.updates) {
        check("[wake] before", phone);
    }
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
    scenario.name = std::filesystem::path(file).stem().string();
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
