// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/bluetooth.h"
#include "platform/linux/base/PlatformLog.h"
#include "platform/linux/bluez/Record.h"
#include "platform/linux/bluez/Service.h"

// The switches of the adapter: each asks bluetoothd and does not wait for it.

using Bluez::Service;

namespace {

void SetAdapterProperty(const std::string& adapter, const char* property, GVariant* value,
                        std::function<void()> then = {}) {
    Bluez::SetProperty(Service::Get().mirror.Connection(), adapter, Bluez::kAdapterInterface,
                       property, value, std::move(then));
}

}  // namespace

int bt_adapter_get_state(bt_adapter_state_e* state) {
    if (state == nullptr) {
        return BT_ERROR_INVALID_PARAMETER;
    }
    Bluez::Mirror& mirror = Service::Get().mirror;
    mirror.Retry();
    const bool isOn = !mirror.PoweredAdapter().empty();
    if (!isOn) {
        PLATFORM_WARN("Bluetooth is off: %s", mirror.WhyOff());
    }
    *state = isOn ? BT_ADAPTER_ENABLED : BT_ADAPTER_DISABLED;
    return BT_ERROR_NONE;
}

int bt_adapter_get_name(char** name) {
    if (name == nullptr) {
        return BT_ERROR_INVALID_PARAMETER;
    }
    const Bluez::Mirror& mirror = Service::Get().mirror;
    const Bluez::Adapter* adapter = mirror.FindAdapter(mirror.PoweredAdapter());
    if (adapter == nullptr) {
        return BT_ERROR_NOT_ENABLED;
    }
    char* copy = Bluez::CopyOrNull(adapter->alias);
    if (copy == nullptr) {
        return BT_ERROR_OPERATION_FAILED;
    }
    *name = copy;
    return BT_ERROR_NONE;
}

int bt_adapter_enable(void) {
    const Bluez::Mirror& mirror = Service::Get().mirror;
    if (!mirror.PoweredAdapter().empty()) {
        return BT_ERROR_ALREADY_DONE;
    }
    const std::string adapter = mirror.AnyAdapter();
    if (adapter.empty()) {
        return BT_ERROR_NOT_ENABLED;
    }
    SetAdapterProperty(adapter, "Powered", g_variant_new_boolean(TRUE));
    return BT_ERROR_NONE;
}

int bt_adapter_disable(void) {
    const Bluez::Mirror& mirror = Service::Get().mirror;
    const std::string adapter = mirror.PoweredAdapter();
    if (adapter.empty()) {
        return mirror.AnyAdapter().empty() ? BT_ERROR_NOT_ENABLED : BT_ERROR_ALREADY_DONE;
    }
    SetAdapterProperty(adapter, "Powered", g_variant_new_boolean(FALSE));
    return BT_ERROR_NONE;
}

int bt_adapter_reset(void) {
    const std::string adapter = Service::Get().mirror.PoweredAdapter();
    if (adapter.empty()) {
        return BT_ERROR_NOT_ENABLED;
    }
    SetAdapterProperty(adapter, "Powered", g_variant_new_boolean(FALSE), [adapter] {
        SetAdapterProperty(adapter, "Powered", g_variant_new_boolean(TRUE));
    });
    return BT_ERROR_NONE;
}

int bt_adapter_set_connectable(bool /*connectable*/) {
    return BT_ERROR_NOT_SUPPORTED;
}

int bt_adapter_set_visibility(bt_adapter_visibility_mode_e mode, int duration) {
    const bool isVisible = mode == BT_ADAPTER_VISIBILITY_MODE_GENERAL_DISCOVERABLE;
    if ((!isVisible && mode != BT_ADAPTER_VISIBILITY_MODE_NON_DISCOVERABLE) || duration < 0) {
        return BT_ERROR_INVALID_PARAMETER;
    }
    const std::string adapter = Service::Get().mirror.PoweredAdapter();
    if (adapter.empty()) {
        return BT_ERROR_NOT_ENABLED;
    }
    if (!isVisible) {
        SetAdapterProperty(adapter, "Discoverable", g_variant_new_boolean(FALSE));
        return BT_ERROR_NONE;
    }
    // First for how long: bluetoothd takes the time when it becomes visible.
    SetAdapterProperty(
        adapter, "DiscoverableTimeout", g_variant_new_uint32(static_cast<guint32>(duration)),
        [adapter] { SetAdapterProperty(adapter, "Discoverable", g_variant_new_boolean(TRUE)); });
    return BT_ERROR_NONE;
}
