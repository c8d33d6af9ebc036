// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tests/simulation/Story.h"

#include <algorithm>
#include <utility>

#include "autoconnect/ZemiAutoConnection/BTAutoConnect.h"
#include "platform/bluetooth.h"
#include "tests/simulation/Dice.h"

namespace {

using TvSim::Phone;
using TvSim::PhonePlan;
using TvSim::Which;

constexpr int kStoryMs = 30000;

// A step without its time.
struct Happening {
    std::string what;
    std::function<void(World&)> run;
};

// What bluetoothd, or the bus, was seen to answer, and what it may.
const std::vector<std::pair<std::string, std::string>>& Errors() {
    static const std::vector<std::pair<std::string, std::string>> kErrors = {
        {"org.bluez.Error.Failed", "br-connection-page-timeout"},
        {"org.bluez.Error.Failed", "br-connection-timeout"},
        {"org.bluez.Error.Failed", "br-connection-key-missing"},
        {"org.bluez.Error.Failed", "br-connection-refused"},
        {"org.bluez.Error.Failed", "br-connection-canceled"},
        {"org.bluez.Error.Failed", "br-connection-profile-unavailable"},
        {"org.bluez.Error.Failed", "br-connection-unknown"},
        {"org.bluez.Error.Failed", "Host is down"},
        {"org.bluez.Error.Failed", "No discovery started"},
        {"org.bluez.Error.InProgress", "br-connection-busy"},
        {"org.bluez.Error.NotReady", "Resource Not Ready"},
        {"org.bluez.Error.InvalidArguments", "Invalid arguments in method call"},
        {"org.bluez.Error.NotAvailable", "br-connection-profile-unavailable"},
        {"org.bluez.Error.DoesNotExist", "Does Not Exist"},
        {"org.bluez.Error.AuthenticationFailed", "no"},
        {"org.freedesktop.DBus.Error.UnknownObject", "no such object"},
        {"org.freedesktop.DBus.Error.ServiceUnknown", "no such name"},
        {"org.freedesktop.DBus.Error.NoReply", "it left the bus"},
        {"org.freedesktop.DBus.Error.Spawn.ChildExited", "exited"},
        {"x.y.Unknown", "what nobody knows"},
    };
    return kErrors;
}

std::string Ms(int ms) {
    return std::to_string(ms) + " ms";
}

using Happenings = std::vector<Happening>;

// What a phone does from now on.
Happening Change(int phone, const std::string& what, std::function<void(PhonePlan&)> change) {
    return {
        "phone " + World::IdOf(phone) + " " + what,
        [phone, change = std::move(change)](World& world) { world.ChangePhone(phone, change); }};
}

// What a phone, or its user, does now.
Happening Act(int phone, const std::string& what, std::function<void(Phone&)> act) {
    return {"phone " + World::IdOf(phone) + " " + what,
            [phone, act = std::move(act)](World& world) { world.WithPhone(phone, act); }};
}

Happening AdvertiseOtherwise(Dice& dice) {
    const int phone = dice.Below(World::kPhones);
    const int ms = dice.Time(6000);
    const int count = 1 + dice.Below(3);
    const auto size = static_cast<std::size_t>(dice.Below(30));
    return dice.Pick(Happenings{
        Change(phone, "is silent", [](PhonePlan& plan) { plan.advertises = false; }),
        Change(phone, "advertises after " + Ms(ms),
               [ms](PhonePlan& plan) { plan.advertiseAfterMs = ms; }),
        Change(phone, "advertises from a private address",
               [](PhonePlan& plan) { plan.advertiseFrom = "5E" + plan.address.substr(2); }),
        Change(phone, "advertises " + std::to_string(size) + " bytes",
               [size](PhonePlan& plan) { plan.manufacturerData.begin()->second.resize(size); }),
        Change(phone, "advertises other entries, too",
               [](PhonePlan& plan) {
                   plan.manufacturerData[1] = {1, 2, 3};
                   plan.manufacturerData[0xFFFF] = std::vector<unsigned char>(20, 0xFF);
               }),
        Change(phone, "advertises only " + std::to_string(count) + " times",
               [count](PhonePlan& plan) { plan.advertiseCount = count; }),
    });
}

Happening ConnectOtherwise(Dice& dice) {
    using Kind = TvSim::ConnectAnswer::Kind;
    const int phone = dice.Below(World::kPhones);
    const int ms = 1 + dice.Time(15000);
    const auto& [name, message] = dice.Pick(Errors());
    const TvSim::ConnectAnswer refusal = {Kind::kRefuse, name, message};
    const std::string error = ": " + name + " " + message;
    return dice.Pick(Happenings{
        Change(phone, "hangs when it is connected",
               [](PhonePlan& plan) { plan.connect.kind = Kind::kNever; }),
        Change(phone, "refuses" + error, [refusal](PhonePlan& plan) { plan.connect = refusal; }),
        Change(phone, "refuses once" + error,
               [refusal](PhonePlan& plan) { plan.firstConnect = refusal; }),
        Change(phone, "loses its link and refuses once" + error,
               [refusal](PhonePlan& plan) {
                   plan.firstConnect = refusal;
                   plan.linkGoesDown = true;
               }),
        Change(phone, "answers a connection after " + Ms(ms),
               [ms](PhonePlan& plan) { plan.connectAfterMs = ms; }),
        Change(phone, "leaves " + Ms(ms) + " after it was connected",
               [ms](PhonePlan& plan) { plan.disconnectsAfterMs = ms; }),
    });
}

Happening PlayOtherwise(Dice& dice) {
    static const std::vector<std::string> kStatus = {"none",         "playing",      "stopped",
                                                     "forward-seek", "reverse-seek", "error"};
    const int phone = dice.Below(World::kPhones);
    const int ms = dice.Time(5000);
    const std::string status = dice.Pick(kStatus);
    return dice.Pick(Happenings{
        Change(phone, "has the player state " + status,
               [status](PhonePlan& plan) { plan.playerStatus = status; }),
        Change(phone, "shows its player after " + Ms(ms),
               [ms](PhonePlan& plan) { plan.playerAfterMs = ms; }),
        Change(phone, "tells its player's state after " + Ms(ms),
               [ms](PhonePlan& plan) { plan.statusAfterMs = ms; }),
        Change(phone, "ignores the play command",
               [](PhonePlan& plan) { plan.playsOnPlay = false; }),
    });
}

Happening ActOtherwise(Dice& dice) {
    static const std::vector<std::string> kStatus = {"playing", "paused", "stopped"};
    const int phone = dice.Below(World::kPhones);
    const std::string id = World::IdOf(phone);
    const std::string status = dice.Pick(kStatus);
    const bool elsewhere = dice.OneIn(2);
    return dice.Pick(Happenings{
        Act(phone, "connects by itself", [](Phone& each) { each.ConnectByItself(); }),
        Act(phone, "leaves", [](Phone& each) { each.Disconnect(); }),
        Act(phone, "is " + status + " by its user",
            [status](Phone& each) { each.SetStatus(status); }),
        Act(phone, "forgets the TV", [](Phone& each) { each.ForgetTv(); }),
        {"phone " + id + " is removed on the TV",
         [phone](World& world) { world.RemoveBond(phone); }},
        {"somebody advertises the address of phone " + id +
             (elsewhere ? " on another adapter" : ""),
         [=](World& world) { world.Advertise(phone, "5E:00:00:00:00:01", elsewhere); }},
    });
}

Happening Bluez(Dice& dice) {
    const Which which = dice.OneIn(4) ? Which::kSecond : Which::kFirst;
    const std::string name = which == Which::kFirst ? "the first adapter " : "the second adapter ";
    const int number = (which == Which::kFirst ? 10 : 20) + dice.Below(2);
    const bool on = dice.OneIn(2);
    return dice.Pick(Happenings{
        {"bluetoothd stops", [](World& world) { world.StopBluez(); }},
        {"bluetoothd is killed", [](World& world) { world.KillBluez(); }},
        {"bluetoothd starts again",
         [](World& world) {
             world.StopBluez();
             world.StartBluez();
         }},
        {name + (on ? "is switched on" : "is switched off"),
         [=](World& world) {
             world.WithBluez([=](auto& bluez) { bluez.SetAdapterPowered(which, on); });
         }},
        {name + (on ? "is plugged in" : "is pulled"),
         [=](World& world) {
             world.WithBluez([=](auto& bluez) { bluez.SetAdapterPresent(which, on); });
         }},
        {name + "comes back as number " + std::to_string(number),
         [=](World& world) { world.Renumber(which, number); }},
    });
}

// What bluetoothd tells of its objects is what is so when it tells it, and what it refuses it does
// not do; only a connection may come about all the same.
Happening Answer(Dice& dice) {
    static const std::vector<std::string> kMethods = {"SetDiscoveryFilter",
                                                      "StartDiscovery",
                                                      "StopDiscovery",
                                                      "ConnectProfile",
                                                      "ConnectProfile",
                                                      "Disconnect",
                                                      "Get",
                                                      "GetManagedObjects",
                                                      "GetId",
                                                      "ActivateAction"};
    static const std::pair<std::string, std::string> kStopFailure = {"org.bluez.Error.Failed",
                                                                     "Host is down"};
    const std::string method = dice.Pick(kMethods);
    const int count = 1 + dice.Below(3);
    std::string what = "the next " + std::to_string(count) + " " + method + " are ";
    MemoryBus::Treatment treatment;
    switch (dice.Below(4)) {
        case 0:
            treatment.isAnswered = false;
            treatment.isDelivered = dice.OneIn(2);
            what += treatment.isDelivered ? "carried out and never answered" : "ignored";
            break;
        case 1: {
            // One that says that there is nothing to stop would be a lie.
            const auto& [name, message] =
                method == "StopDiscovery" ? kStopFailure : dice.Pick(Errors());
            treatment.error = name;
            treatment.message = message;
            treatment.isDelivered = method == "ConnectProfile" && dice.OneIn(2);
            treatment.answerAfterMs = dice.OneIn(2) ? dice.Time(20000) : 0;
            what += std::string(treatment.isDelivered ? "carried out and " : "") +
                    "refused after " + Ms(treatment.answerAfterMs) + ": " + name + " " + message;
            break;
        }
        default: {
            const bool isBegunLate = dice.OneIn(2) || method.compare(0, 3, "Get") == 0;
            const int ms = dice.Time(20000);
            (isBegunLate ? treatment.deliverAfterMs : treatment.answerAfterMs) = ms;
            what += (isBegunLate ? "begun after " : "answered after ") + Ms(ms);
        }
    }
    return {what, [=](World& world) { world.Treat(method, count, treatment); }};
}

Happening Tv(Dice& dice) {
    static const std::vector<std::pair<std::string, std::vector<int>>> kKeys = {
        {TvState::kReasonKey, {0, 1, 40, 41, 42, 93, 94, 95, 96}},
        {TvState::kModeKey, {0, 1, 2}},
        {TvState::kTypeKey, {0, 1, 2, 3, 4, 5}},
        {TvState::kBlockKey, {0, 1, 2}}};
    if (dice.OneIn(5)) {
        const bool isRotating = dice.OneIn(2);
        return {isRotating ? "it is a rotating TV" : "it is not a rotating TV",
                [isRotating](World& world) { world.tv.SetRotating(isRotating); }};
    }
    const auto& [key, values] = dice.Pick(kKeys);
    const int value = dice.Pick(values);
    return {key + " is " + std::to_string(value),
            [key = key, value](World& world) { world.tv.SetKey(key, value); }};
}

Happening Phones(Dice& dice) {
    std::vector<bool> isOn;
    std::string text;
    for (int phone = 0; phone < TvState::kPhones; ++phone) {
        isOn.push_back(!dice.OneIn(3));
        text += isOn.back() ? " " + World::IdOf(phone) : "";
    }
    std::vector<int> order;
    for (int i = dice.Below(TvState::kPhones + 1); i > 0; --i) {
        order.push_back(dice.Below(TvState::kPhones));
        text += (order.size() == 1 ? ", first " : " ") + World::IdOf(order.back());
    }
    const bool isMaskOff = dice.OneIn(2);
    return {"the phones that are on:" + text + (isMaskOff ? "; the others have no mask" : ""),
            [=](World& world) { world.tv.SetPhones(isOn, isMaskOff, order); }};
}

Happening Keys(Dice& dice) {
    static const std::vector<std::string> kTexts = {
        "", "[", "7", "{}", "[1]", "[{\"address\":\"A0\",\"value\":\"Y\"}]", "{\"devices\":7}"};
    const int ms = dice.Time(8000);
    const std::string text = dice.Pick(kTexts);
    const bool isOrder = dice.OneIn(2);
    return dice.Pick(Happenings{
        {std::string(isOrder ? "the order" : "the list") + " of the phones is '" + text + "'",
         [=](World& world) { world.tv.SpoilPhones(isOrder, text); }},
        {"the keys are locked for " + Ms(ms), [ms](World& world) { world.tv.LockKeys(ms); }},
        {"the keys are broken for " + Ms(ms), [ms](World& world) { world.tv.BreakKeys(ms); }},
    });
}

Happening Bus(Dice& dice) {
    static const std::vector<std::string> kUpdates = {
        "{}",
        "[",
        "{\"btMac\":\"A0:11:22:33:44:02\"}",
        "{\"btMac\":\"A0:11:22:33:44:02\",\"value\":\"N\"}",
        "{\"btMac\":\"A0:11:22:33:44:02\",\"value\":\"Y\"}",
        "{\"btMac\":1,\"value\":[]}"};
    const std::string text = dice.Pick(kUpdates);
    const int ms = dice.Time(300);
    return dice.Pick(Happenings{
        {"messages take " + Ms(ms), [ms](World& world) { world.SetLatency(ms); }},
        {"a command without its text",
         [](World& world) { world.Command(kMobileUpdateCommand, g_variant_new("(i)", 1)); }},
        {"the setting " + text, [text](World& world) { world.Update(text); }},
    });
}

bool OnDevice(bt_device_info_s* /*info*/, void* /*data*/) {
    return true;
}

// All that another part of the process may want to know.
void AskPlatform(const char* address) {
    bt_device_info_s* info = nullptr;
    bt_adapter_get_bonded_device_info(address, &info);
    bt_adapter_free_device_info(info);
    bt_adapter_foreach_bonded_device(OnDevice, nullptr);
    char* text = nullptr;
    bt_adapter_get_name(&text);
    const MallocPtr<char> name(text);
    int vendor = 0;
    int product = 0;
    bt_device_get_remote_vid_pid(address, &vendor, &product);
    bool isConnected = false;
    bt_device_is_profile_connected(address, BT_PROFILE_HID, &isConnected);
    bt_device_set_authorization(address, BT_DEVICE_AUTHORIZED);
    bt_audio_connected_info_s* connected = nullptr;
    bt_audio_get_connected_info(BT_AUDIO_PROFILE_TYPE_A2DP_SINK, &connected);
    bt_audio_free_connected_info(connected);
}

// As no platform should call.
void CallWithoutData() {
    CBtAutoConnect::OnLeScanResult(BT_ERROR_NONE, nullptr, nullptr);
    CBtAutoConnect::OnLEScanTimeout(nullptr);
    CBtAutoConnect::OnWakeUptimer(nullptr);
    MobileList::OnAutoOnOffMobileListVconfKeyChanged(nullptr, nullptr);
    MobileList::OnSMDeviceListVconfKeyChanged(nullptr, nullptr);
}

// Another part of the service's process uses Bluetooth.
Happening Other(Dice& dice) {
    const std::string address = TvState::AddressOf(dice.Below(World::kPhones));
    const auto mode = dice.OneIn(2) ? BT_ADAPTER_VISIBILITY_MODE_GENERAL_DISCOVERABLE
                                    : BT_ADAPTER_VISIBILITY_MODE_NON_DISCOVERABLE;
    return dice.Pick(Happenings{
        {"the process switches Bluetooth on", [](World&) { bt_adapter_enable(); }},
        {"the process switches Bluetooth off", [](World&) { bt_adapter_disable(); }},
        {"the process resets Bluetooth", [](World&) { bt_adapter_reset(); }},
        {"the process makes the TV visible, or not",
         [mode](World&) { bt_adapter_set_visibility(mode, 60); }},
        {"the platform calls back without data", [](World&) { CallWithoutData(); }},
        {"no scan starts the next time", [](World& world) { world.SpoilScan(); }},
        {"the process asks about " + address, [address](World&) { AskPlatform(address.c_str()); }},
    });
}

// Some kinds stand here more than once: they are more frequent.
Happening MakeHappening(Dice& dice) {
    static const std::vector<Happening (*)(Dice&)> kKinds = {AdvertiseOtherwise,
                                                             AdvertiseOtherwise,
                                                             ConnectOtherwise,
                                                             ConnectOtherwise,
                                                             ConnectOtherwise,
                                                             PlayOtherwise,
                                                             ActOtherwise,
                                                             ActOtherwise,
                                                             ActOtherwise,
                                                             Bluez,
                                                             Bluez,
                                                             Answer,
                                                             Answer,
                                                             Phones,
                                                             Tv,
                                                             Bus,
                                                             Other,
                                                             Keys};
    return dice.Pick(kKinds)(dice);
}

}  // namespace

std::vector<Step> MakeStory(std::uint64_t seed, int number) {
    Dice dice(seed * 0x9E3779B97F4A7C15U + static_cast<std::uint64_t>(number));
    std::vector<Step> steps;
    for (int i = dice.Below(10); i > 0; --i) {
        Happening next = MakeHappening(dice);
        // Half of them as things are, half of them in the middle of something.
        const int atMs = dice.OneIn(2) ? 0 : dice.Below(kStoryMs);
        steps.push_back({atMs, std::move(next.what), std::move(next.run)});
    }
    int atMs = 0;
    for (int i = 1 + dice.Below(20); i > 0; --i) {
        atMs += dice.OneIn(3) ? dice.Time(1000) : dice.Below(kStoryMs / 5);
        steps.push_back({atMs, "the TV wakes", [](World& world) { world.Wake(); }, true});
    }
    std::stable_sort(steps.begin(), steps.end(),
                     [](const Step& a, const Step& b) { return a.atMs < b.atMs; });
    return steps;
}
