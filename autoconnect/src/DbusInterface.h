// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

// The service's names on the system bus. Commands are signals on the interface.

constexpr const char* kServiceName = "com.velmora.tv.bt.autoconnect";
constexpr const char* kObjectPath = "/com/velmora/tv/bt/autoconnect";
constexpr const char* kInterfaceName = "com.velmora.tv.bt.autoconnect";

// The TV woke; any arguments.
constexpr const char* kPrepareCommand = "PrePareAndDoAutoConnect";
// A phone changed its setting; (s), JSON text.
constexpr const char* kMobileUpdateCommand = "AutoConMobileUpdate";

// What introspection shows. "UpdateList" is declared and has no handler.
constexpr const char* kIntrospectionXml =
    "<node>"
    "   <interface name ='com.velmora.tv.bt.autoconnect'>"
    "       <method name = 'PrePareAndDoAutoConnect'>"
    "       </method>"
    "       <method name = 'UpdateList'>"
    "       </method>"
    "   </interface>"
    "</node>";
