// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>

#include "utility/BTDatabaseManager.h"

namespace Util {

// The device database, made when it is missing, and open for as long as this object exists; false
// when it cannot be opened. Only one at a time.
class OpenedDatabase {
public:
    OpenedDatabase() {
        BTDatabaseManager* manager = BTDatabaseManager::getInstance();
        if (manager != nullptr && manager->PrepareDatabase() && manager->OpenDatabase()) {
            m_manager.reset(manager);
        }
    }

    explicit operator bool() const { return m_manager != nullptr; }
    BTDatabaseManager* operator->() const { return m_manager.get(); }

private:
    struct Close {
        void operator()(BTDatabaseManager* manager) const { manager->CloseDatabase(); }
    };
    std::unique_ptr<BTDatabaseManager, Close> m_manager;  // lives as long as the process
};

}  // namespace Util
