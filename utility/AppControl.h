// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "common/CHandle.h"
#include "platform/application.h"

using AppControlPtr = CPtr<app_control_s, app_control_destroy>;

// A request to launch `appId`, or to send it the request when it already runs. Null when the
// platform is out of memory; its functions refuse a null request.
inline AppControlPtr MakeLaunchRequest(const char* appId) {
    AppControlPtr handle;
    app_control_create(Out(handle));
    app_control_set_operation(handle.get(), APP_CONTROL_OPERATION_DEFAULT);
    app_control_set_app_id(handle.get(), appId);
    return handle;
}
