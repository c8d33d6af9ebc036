// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

#include "tests/unit/Callable.h"
#include "utility/BTDatabaseManager.h"

// The functions of the shared layer that scripts call.
namespace Utility {

struct Database : BTDatabaseManager {};

// What the functions of the database belong to.
extern std::optional<Database> database;

// The function with that name, such as "CommonUtil::ToCapital"; NULL when there is none. After a
// colon stands which of several is meant.
const Callable::Function* Find(const std::string& name);

}  // namespace Utility
