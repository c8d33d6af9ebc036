// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gmock/gmock.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/bluetooth.h"

using Condition = std::function<bool()>;
using ManufacturerEntries = std::map<std::uint16_t, std::vector<unsigned char>>;
using Texts = std::vector<std::string>;

constexpr char kPlayer[] = "com.velmora.tv.bmp";  // the one application that is installed

// What a phone says to the TV's connection requests. One that does not answer does so when it
// connects by itself: too late.
enum class Answer { kYes, kNo, kNone };
struct Phone {
    std::string address;
    const char* name;  // empty: it never told one; NULL: no bond with it
    Answer answer;
};
// What each of them says of itself; its class is 4/24, headphones.
constexpr int kVendor = 0x04E8;
constexpr int kProduct = 0x9000;
inline const Phone kPhones[] = {{"A0:00:00:00:00:0A", "Alice", Answer::kYes},
                                {"A0:00:00:00:00:0B", "", Answer::kNo},
                                {"A0:00:00:00:00:0C", nullptr, Answer::kNo},
                                {"90:00:00:00:00:0D", "Dora", Answer::kNone}};

// What surrounds the platform under test: verbs that set it and make things happen. At first there
// is no Bluetooth service, kPlayer does not run, no event is raised, and the features are
// tv/flag=true, tv/number=7 and tv/text=seven.
class World {
public:
    virtual ~World() = default;
    // Lets the platform work until the condition holds; false when it never does.
    [[nodiscard]] virtual bool Await(const Condition& condition) = 0;
    // Lets what is under way to the platform arrive.
    virtual void Settle() = 0;
    virtual void SetRaised(const std::string& event, bool raised) = 0;
    virtual void StartPlayer() = 0;
    // Returns when the platform knows the adapter with the bonded ones of kPhones.
    virtual void TurnOn() = 0;
    virtual void TurnOff() = 0;
    // After TurnOn: a second adapter appears, powered and without a name, which has a bond with
    // kPhones[2], is connected with it and hears it advertise. False where there can be one only.
    [[nodiscard]] virtual bool AddAdapter() = 0;
    // Somebody advertises; false when no radio listens.
    virtual bool Advertise(const ManufacturerEntries& entries) = 0;
    // The phone, without an application that names it, advertises; false where the platform cannot
    // tell whose that is.
    virtual bool AdvertiseIdentity(const Phone& phone) = 0;
    // The phone connects by itself, or leaves.
    virtual void SetConnected(const Phone& phone, bool connected) = 0;
};
[[nodiscard]] std::unique_ptr<World> MakeWorld();

class ContractTest : public testing::Test {
protected:
    // Exactly these come, in any order, and nothing after them.
    void Expect(Texts& heard, const Texts& expected) {
        EXPECT_TRUE(m_world->Await([&] { return heard.size() >= expected.size(); }));
        m_world->Settle();
        EXPECT_THAT(std::exchange(heard, {}), testing::UnorderedElementsAreArray(expected));
    }

    const std::unique_ptr<World> m_world = MakeWorld();
};
