// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "utility/BTDatabaseManager.h"

namespace Util {

// The device database, made if need be, and open for as long as this lives; false when it cannot be
// opened. Not while another one lives.
class OpenedDatabase {
public:
    OpenedDatabase()
        : m_manager(BTDatabaseManager::getInstance()),
          m_isOpen(m_manager != nullptr && m_manager->PrepareDatabase() &&
                   m_manager->OpenDatabase()) {}
    ~OpenedDatabase() {
        if (m_isOpen) {
            m_manager->CloseDatabase();
        }
    }
    OpenedDatabase(const OpenedDatabase&) = delete;
    OpenedDatabase& operator=(const OpenedDatabase&) = delete;

    explicit operator bool() const { return m_isOpen; }
    BTDatabaseManager* operator->() const { return m_manager; }

private:
    BTDatabaseManager* m_manager;  // not owned, lives as long as the process
    bool m_isOpen;
};

}  // namespace Util
