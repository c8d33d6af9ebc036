// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <cstdint>

#include "tests/unit/PlatformTest.h"
#include "utility/VconfUtil.h"

using Util::VconfUtil;

namespace {

class VconfUtilTest : public PlatformTest {};

// The ids are an interface between programs, so no row may move or change.
TEST_F(VconfUtilTest, KeyTableIsFixed) {
    ASSERT_EQ(VconfUtil::keys.size(), 144U);
    std::uint64_t hash = 0xcbf29ce484222325;  // FNV-1a over the keys, one on each line
    for (const std::string& key : VconfUtil::keys) {
        for (const char c : key + "\n") {
            hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3;
        }
    }
    EXPECT_EQ(hash, 0x90eeaf88fd9cb7ef);
    const int ids[] = {
#define VCONF_KEY(id, key) Util::VCONF_KEY_##id,
#include "utility/VconfKeyTable.h"
#undef VCONF_KEY
    };
    for (int i = 0; i < 144; ++i) {
        EXPECT_EQ(ids[i], i);
    }
}

}  // namespace
