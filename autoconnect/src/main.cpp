// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "autoconnect/src/AutoConnectApp.h"

int main() {
    AutoConnectApp::GetInstance().StartMainLoop();
    return 0;
}
