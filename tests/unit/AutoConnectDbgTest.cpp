// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <stdexcept>

#include "autoconnect/src/AutoConnectDbg.h"
#include "tests/unit/PlatformTest.h"

// Compilers name the anonymous namespace in their own ways, so it is in none.
constexpr int kTracerLine = __LINE__ + 2;
static int Traced(int way) {
    BTLOG_TRACE();
    if (way == 1) {
        return way;
    }
    if (way == 2) {
        throw std::runtime_error("the hard way");
    }
    BTLOG_INFO("%s", "100 %s");
    return way;
}

namespace {

class AutoConnectDbgTest : public PlatformTest {};

TEST_F(AutoConnectDbgTest, TracesEveryWayOut) {
    const std::string where = "[int Traced(int)(" + std::to_string(kTracerLine) + ")]";
    const std::string in = "3 BT_AUTO_CONNECT AutoConnectDbg.h: ApiTracker(90) > IN >> " + where;
    const std::string out = "3 BT_AUTO_CONNECT AutoConnectDbg.h: ~ApiTracker(94) > OUT << " + where;
    Traced(1);
    EXPECT_THAT(Fake::Printed(), ElementsAre(in, out));
    Fake::ClearRecord();
    EXPECT_THROW(Traced(2), std::runtime_error);
    EXPECT_THAT(Fake::Printed(), ElementsAre(in, out));
    Fake::ClearRecord();
    Traced(0);
    EXPECT_THAT(Fake::Printed(), ElementsAre(in,
                                             "4 BT_AUTO_CONNECT AutoConnectDbgTest.cpp: Traced(" +
                                                 std::to_string(kTracerLine + 7) + ") > 100 %s",
                                             out));
}

}  // namespace
