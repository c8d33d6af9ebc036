// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "autoconnect/src/AutoConnectApp.h"

int main() {
    AutoConnectApp& app = AutoConnectApp::GetInstance();
    app.StartMainLoop();
    return 0;
}
