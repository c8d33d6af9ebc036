// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <glib.h>

#include <atomic>
#include <thread>

#include "common/CHandle.h"
#include "platform/application.h"
#include "tests/contract/World.h"

namespace {

using ApplicationContractTest = ContractTest;

bool AddExtra(app_control_h request, const char* key, void* all) noexcept {
    char* value = nullptr;
    EXPECT_EQ(app_control_get_extra_data(request, key, &value), 0);
    *static_cast<std::string*>(all) += key + std::string(MallocPtr<char>(value).get());
    return *key != 'c';
}
void OnResult(app_control_h request, app_control_error_e result, void* texts) noexcept {
    char* id = nullptr;
    EXPECT_EQ(app_control_get_app_id(request, &id), 0);
    std::string all = MallocPtr<char>(id).get() + std::string(result == 0 ? " runs " : " fails ");
    EXPECT_EQ(app_control_foreach_extra_data(request, AddExtra, &all), 0);
    static_cast<Texts*>(texts)->push_back(all);
}

// What a launch on another thread comes to; the main loop runs meanwhile.
int LaunchElsewhere(World& world, app_control_h request) {
    constexpr int kRuns = 1;
    std::atomic<int> outcome(kRuns);
    std::thread other([&] {
        outcome = app_control_send_launch_request(request, nullptr, nullptr);
        g_main_context_wakeup(nullptr);
    });
    EXPECT_TRUE(world.Await([&] { return outcome != kRuns; }));
    other.join();
    return outcome;
}

// A request is a copy, in the order in which its keys came first.
TEST_F(ApplicationContractTest, OutcomeOfALaunchComesLaterAndOnce) {
    Texts outcomes;
    for (const std::string id : {"com.velmora.tv.missing", kPlayer}) {
        bool runs = id != kPlayer;
        CPtr<app_info_s, app_info_destroy> info;
        EXPECT_EQ(app_manager_get_app_info(id.c_str(), Out(info)) == 0, id == kPlayer);
        EXPECT_EQ(app_manager_is_running(id.c_str(), &runs), 0);
        EXPECT_FALSE(runs);
        if (id == kPlayer) {
            m_world->StartPlayer();
            EXPECT_TRUE(app_manager_is_running(kPlayer, &runs) == 0 && runs);
        }
        CPtr<app_control_s, app_control_destroy> request;
        EXPECT_EQ(app_control_create(Out(request)), 0);
        EXPECT_EQ(app_control_set_app_id(request.get(), std::string(id).c_str()), 0);
        for (const char* extra : {"b\0001", "a\0002", "c\0003", "d\0004", "b\0005"}) {
            EXPECT_EQ(app_control_add_extra_data(request.get(), extra, extra + 2), 0);
        }
        app_control_h raw = request.get();
        EXPECT_EQ(app_control_send_launch_request(raw, nullptr, nullptr), 0);
        EXPECT_EQ(LaunchElsewhere(*m_world, raw), runs ? 0 : APP_CONTROL_ERROR_APP_NOT_FOUND);
        EXPECT_EQ(app_control_send_launch_request_async(raw, OnResult, nullptr, &outcomes), 0);
        request.reset();
        EXPECT_TRUE(outcomes.empty());
        Expect(outcomes, {id + (runs ? " runs " : " fails ") + "b5a2c3"});
    }
}

TEST_F(ApplicationContractTest, NullArgumentsFailAndTextsAreNullAfterAFailure) {
    char garbage = 0;
    char* id = &garbage;
    char* value = &garbage;
    CPtr<app_control_s, app_control_destroy> owner;
    EXPECT_EQ(app_control_create(Out(owner)), 0);
    app_control_h r = owner.get();
    EXPECT_TRUE(app_control_get_app_id(r, &id) < 0 && id == nullptr);
    EXPECT_TRUE(app_control_get_extra_data(r, "none", &value) < 0 && value == nullptr);
    EXPECT_TRUE(app_control_create(nullptr) < 0 && app_control_set_app_id(r, nullptr) < 0);
    EXPECT_TRUE(app_control_get_app_id(r, nullptr) < 0 && app_control_destroy(nullptr) < 0);
    EXPECT_TRUE(app_control_get_extra_data(r, nullptr, &value) < 0);
    EXPECT_TRUE(app_control_add_extra_data(r, "none", "\xFF") < 0);
    EXPECT_TRUE(app_control_add_extra_data(r, "\xFF", "none") < 0);
    EXPECT_TRUE(app_control_get_extra_data(r, "none", &value) < 0 && value == nullptr);
    EXPECT_TRUE(app_control_foreach_extra_data(r, nullptr, nullptr) < 0);
    EXPECT_TRUE(app_control_send_launch_request(nullptr, nullptr, nullptr) < 0);
    EXPECT_TRUE(app_manager_is_running(kPlayer, nullptr) < 0);
    EXPECT_TRUE(app_manager_get_app_info(kPlayer, nullptr) < 0);
}

}  // namespace
