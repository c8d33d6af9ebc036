// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <string>

#include "fuzz/Check.h"
#include "fuzz/Input.h"
#include "platform/bluetooth.h"
#include "platform/linux/bluez/Audio.h"
#include "platform/linux/bluez/Mirror.h"
#include "platform/linux/bluez/Record.h"
#include "platform/linux/bluez/Scan.h"
#include "tests/memory_bus/MemoryBus.h"
#include "tests/memory_bus/VirtualTime.h"

// What bluetoothd says, during a scan and while a phone is connected: a GVariant a(sov) of a name,
// a path and a message's arguments of any type. The name is that of a signal, or one of those in
// Tell below. A seed is the variant's text; the mutator turns it into bytes before it changes it.

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

namespace {

constexpr const char* kPhone = "A0:B1:C2:D3:E4:F5";

GVariantPtr ParseSeed(const std::uint8_t* data, std::size_t size) {
    const std::string text = TextOf(data, size);
    return GVariantPtr(text.empty() || text[0] != '['
                           ? nullptr
                           : g_variant_parse(G_VARIANT_TYPE("a(sov)"), text.data(),
                                             text.data() + text.size(), nullptr, nullptr));
}

GVariantPtr MessagesIn(const std::uint8_t* data, std::size_t size) {
    GVariantPtr seed = ParseSeed(data, size);
    if (seed != nullptr) {
        return seed;
    }
    // Exactly as large as the input, so that a byte too many is noticed.
    const CPtr<GBytes, g_bytes_unref> bytes(g_bytes_new(data, size));
    return GVariantPtr(
        g_variant_ref_sink(g_variant_new_from_bytes(G_VARIANT_TYPE("a(sov)"), bytes.get(), FALSE)));
}

void OnHeard(int result, bt_adapter_le_device_scan_result_info_s* info, void* /*data*/) noexcept {
    Check((result == BT_ERROR_NONE) == (info != nullptr), "an advertisement or an error");
    if (info == nullptr) {
        return;
    }
    int company = 0;
    int size = 0;
    MallocPtr<char> content;
    Check(
        bt_adapter_le_get_scan_result_manufacturer_data(
            info, BT_ADAPTER_LE_PACKET_ADVERTISING, &company, Out(content), &size) == BT_ERROR_NONE,
        "the packet that was made can be read");
    Check(size + 4 == info->adv_data_len, "the content is the packet's");
}

void OnAudio(int /*result*/, bool /*connected*/, const char* address, void* /*data*/) noexcept {
    Check(address != nullptr, "an event names its phone");
}

struct Stack {
    // Its calls wait until the input answers them.
    Stack() {
        bus.treat = [](const MemoryBus::CallInfo& call) {
            MemoryBus::Treatment treatment;
            treatment.isAnswered = call.destination != "org.bluez";
            return treatment;
        };
        bus.SetBluez(true);
        Settle();
    }
    static void Settle() {
        while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
        }
    }

    MemoryBus bus;
    Bluez::Mirror mirror;
    Bluez::Scan scan{mirror};
    Bluez::Audio audio{mirror, scan};
};

void Ask(const Stack& stack) {
    const Bluez::Mirror& mirror = stack.mirror;
    const std::string adapter = mirror.AnyAdapter();
    for (const std::string& path : mirror.BondedDevices(adapter)) {
        const DeviceInfoPtr record = Bluez::MakeRecord(*mirror.FindDevice(path));
        Check(record->remote_address != nullptr, "a record has an address");
        static_cast<void>(mirror.PlayerPath(path));
    }
    for (const std::string& path : mirror.DevicesWithTransport()) {
        Check(mirror.HasTransport(path), "a device with a stream has one");
    }
    const Bluez::Device* phone = nullptr;
    Check((Bluez::FindBonded(mirror, kPhone, &phone) == BT_ERROR_NONE) == (phone != nullptr),
          "a bonded phone is known");
    Check(stack.audio.CurrentPhone().empty() || stack.audio.ConnectedCount() > 0,
          "the phone is connected");
    static_cast<void>(mirror.FindPlayer(mirror.PlayerPath(stack.audio.LastOfConnected())));
}

void Tell(Stack& stack, const std::string& name, const char* path, GVariant* arguments) {
    if (name == "PropertiesChanged" || name == "InterfacesAdded" || name == "InterfacesRemoved") {
        const char* interface = name[0] == 'P' ? "org.freedesktop.DBus.Properties"
                                               : "org.freedesktop.DBus.ObjectManager";
        stack.bus.Signal(path, interface, name, arguments);
    } else if (name == "reply") {
        stack.bus.AnswerBluez(arguments, nullptr);
    } else if (name == "busy") {
        stack.bus.AnswerBluez(nullptr, "org.bluez.Error.InProgress");
    } else if (name == "refuse") {
        stack.bus.AnswerBluez(nullptr, "org.bluez.Error.Failed");
    } else if (name == "vanish") {
        stack.bus.SetBluez(false);
    } else if (name == "appear") {
        stack.bus.SetBluez(true);
    } else if (name == "wait") {
        g_main_context_iteration(nullptr, TRUE);
    } else if (name == "scan") {
        static_cast<void>(stack.scan.Start(OnHeard, nullptr));
    } else if (name == "stop") {
        static_cast<void>(stack.scan.Stop());
    } else if (name == "connect") {
        static_cast<void>(stack.audio.Connect(kPhone));
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    g_setenv("TV_LOG_LEVEL", "error", FALSE);
    VirtualTime::Begin([] {});
    return 0;
}

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t maxSize, unsigned int /*seed*/) {
    const GVariantPtr seed = ParseSeed(data, size);
    if (seed != nullptr && g_variant_get_size(seed.get()) <= maxSize) {
        size = g_variant_get_size(seed.get());
        g_variant_store(seed.get(), data);
    }
    return LLVMFuzzerMutate(data, size, maxSize);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const GVariantPtr messages = MessagesIn(data, size);
    Stack stack;
    stack.audio.SetCallback(OnAudio, nullptr);
    GVariantIter iter;
    g_variant_iter_init(&iter, messages.get());
    const char* name = nullptr;
    const char* path = nullptr;
    GVariant* arguments = nullptr;
    while (g_variant_iter_loop(&iter, "(&s&ov)", &name, &path, &arguments)) {
        Tell(stack, name, path, arguments);
        Stack::Settle();
        Ask(stack);
    }
    return 0;
}
