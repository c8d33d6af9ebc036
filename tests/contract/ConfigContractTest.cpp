// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <climits>

#include "common/CHandle.h"
#include "platform/config_store.h"
#include "tests/contract/World.h"

namespace {

using ConfigContractTest = ContractTest;

constexpr char kKey[] = "db/contract/key";

// What the key reads as: text|flag|number, "-" for none. Whether a number reads as a flag as well,
// as an older writer may have left it, is not looked at.
std::string Read(const char* key) {
    int flag = 4711;
    int number = 4711;
    const MallocPtr<char> text(vconf_get_str(key));
    const bool isFlag = vconf_get_bool(key, &flag) == 0;
    const bool isNumber = vconf_get_int(key, &number) == 0;
    EXPECT_TRUE((isFlag || flag == 4711) && (isNumber || number == 4711)) << key;
    return std::string(text ? text.get() : "-") +
           (!isFlag || isNumber ? "|-|" : "|" + std::to_string(flag) + "|") +
           (isNumber ? std::to_string(number) : "-");
}
void OnChanged(keynode_t* /*node*/, void* count) noexcept {
    ++*static_cast<int*>(count);
}
void OnChangedOnce(keynode_t* /*node*/, void* count) noexcept {
    ++*static_cast<int*>(count);
    EXPECT_EQ(vconf_ignore_key_changed(kKey, OnChangedOnce), 0);
}
void OnStored(int result, void* texts) noexcept {
    static_cast<Texts*>(texts)->push_back(std::to_string(result) + " " + Read(kKey));
}

TEST_F(ConfigContractTest, KeyReadsAsTheLastValueOnlyInItsType) {
    EXPECT_EQ(Read("db/contract/none") + Read("memory/contract/none"), "-|-|--|-|-");
    for (const char* key : {"db/contract/value", "memory/contract/value"}) {
        for (const int number : {0, -1, INT_MIN, INT_MAX}) {
            EXPECT_EQ(vconf_set_int(key, number), 0);
            EXPECT_EQ(Read(key), "-|-|" + std::to_string(number));
            EXPECT_EQ(vconf_set_bool(key, number), 0);
            EXPECT_EQ(Read(key), "-|" + std::to_string(number) + "|-");
            EXPECT_EQ(vconf_set_str(key, number != 0 ? "\xC3\xBC\n" : ""), 0);
            EXPECT_EQ(Read(key), number != 0 ? "\xC3\xBC\n|-|-" : "|-|-");
        }
    }
}

TEST_F(ConfigContractTest, AsynchronousWriteCompletesOnceAfterReturn) {
    Texts results;
    int count = 0;
    for (const char* key : {"", "db", "DB/contract", "file/contract", "/db/contract"}) {
        EXPECT_TRUE(vconf_set_str(key, "x") < 0 && Read(key) == "-|-|-") << key;
        EXPECT_LT(vconf_set_int_async(key, 1, OnStored, &results), 0) << key;
        EXPECT_LT(vconf_notify_key_changed(key, OnChanged, &count), 0) << key;
    }
    EXPECT_EQ(vconf_set_str_async(kKey, "a", nullptr, nullptr), 0);
    EXPECT_EQ(vconf_set_int_async(kKey, 5, OnStored, &results), 0);
    EXPECT_TRUE(results.empty());
    Expect(results, {"0 -|-|5"});
}

TEST_F(ConfigContractTest, EveryRegistrationHearsOfEachWriteUntilItIsIgnored) {
    int counts[] = {0, 0};
    int once[] = {0, 0};
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(vconf_notify_key_changed(kKey, OnChanged, &counts[i]), 0);
        EXPECT_EQ(vconf_notify_key_changed(kKey, OnChangedOnce, &once[i]), 0);
    }
    // The same value the second time, another type the third time.
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(i < 2 ? vconf_set_int(kKey, 1) : vconf_set_bool(kKey, 1), 0);
        EXPECT_THAT(counts, testing::Each(i));
        EXPECT_TRUE(m_world->Await([&] { return counts[0] > i && counts[1] > i; }));
        EXPECT_EQ(once[0] + once[1], 1);
    }
    EXPECT_EQ(vconf_set_int(kKey, 2), 0);
    EXPECT_EQ(vconf_ignore_key_changed(kKey, OnChanged), 0);
    EXPECT_LT(vconf_ignore_key_changed(kKey, OnChanged), 0);
    m_world->Settle();
    EXPECT_THAT(counts, testing::Each(3));
}

}  // namespace
