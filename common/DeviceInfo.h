// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "common/CHandle.h"
#include "platform/bluetooth.h"

// Owner of a record of the Bluetooth interface.
using DeviceInfoPtr = CPtr<bt_device_info_s, bt_adapter_free_device_info>;
