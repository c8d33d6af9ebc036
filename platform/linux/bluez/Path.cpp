// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/linux/bluez/Path.h"

#include <algorithm>
#include <charconv>

namespace Bluez {

std::string AddressOfPath(const std::string& path) {
    const std::size_t name = path.rfind("/dev_");
    std::string address = name == std::string::npos ? "" : path.substr(name + 5);
    std::replace(address.begin(), address.end(), '_', ':');
    return address;
}

bool IsBelow(const std::string& path, const std::string& parent) {
    return !parent.empty() && path.size() > parent.size() && path[parent.size()] == '/' &&
           path.compare(0, parent.size(), parent) == 0;
}

int TransportNumber(const std::string& path) {
    const std::size_t name = path.rfind("/fd");
    int number = -1;
    if (name != std::string::npos) {
        std::from_chars(path.data() + name + 3, path.data() + path.size(), number);
    }
    return number;
}

}  // namespace Bluez
