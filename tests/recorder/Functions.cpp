// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <cstdlib>
#include <sstream>
#include <string>
#include <tuple>
#include <type_traits>

#include "common/CHandle.h"
#include "platform/application.h"
#include "platform/bluetooth.h"
#include "platform/config_store.h"
#include "platform/database.h"
#include "platform/device_power.h"
#include "platform/event_wait.h"
#include "platform/screen_manager.h"
#include "platform/system_info.h"
#include "tests/recorder/Recorder.h"

namespace {

using Recorder::Kind;
using Recorder::Thread;

template <typename>
struct Signature;
template <typename R, typename... P>
struct Signature<R(P...)> {
    using Result = R;
    template <std::size_t i>
    using Parameter = std::tuple_element_t<i, std::tuple<P...>>;
};

std::string Describe(app_control_h request);

// Numbers, texts and requests; what a function gives back and what it calls is not told.
template <typename T>
void Put(std::string& text, const T& value) {
    std::ostringstream out;
    if constexpr (std::is_same_v<T, const char*>) {
        out << (value == nullptr ? "(null)" : value);
    } else if constexpr (std::is_same_v<T, app_control_h>) {
        out << Describe(value);
    } else if constexpr (!std::is_pointer_v<T>) {
        out << value;
    } else {
        return;
    }
    text += (text.empty() ? "" : ",") + out.str();
}

template <typename R, typename... P>
R Pass(Kind kind, Thread thread, const char* name, R (*real)(P...), P... arguments) {
    std::string text;
    (Put(text, arguments), ...);
    if (const auto code = Recorder::Enter(kind, thread, name, text)) {
        if constexpr (std::is_pointer_v<R>) {
            return nullptr;
        } else {
            return *code;
        }
    }
    const R result = real(arguments...);
    if constexpr (!std::is_pointer_v<R>) {
        if (result == 0) {
            Recorder::Succeeded(name, text);
        }
    }
    return result;
}

}  // namespace

#define PARAMETER(function, i) Signature<decltype(function)>::Parameter<i> a##i
#define PARAMETERS_0(function)
#define PARAMETERS_1(function) PARAMETER(function, 0)
#define PARAMETERS_2(function) PARAMETERS_1(function), PARAMETER(function, 1)
#define PARAMETERS_3(function) PARAMETERS_2(function), PARAMETER(function, 2)
#define PARAMETERS_4(function) PARAMETERS_3(function), PARAMETER(function, 3)
#define ARGUMENTS_0
#define ARGUMENTS_1 , a0
#define ARGUMENTS_2 ARGUMENTS_1, a1
#define ARGUMENTS_3 ARGUMENTS_2, a2
#define ARGUMENTS_4 ARGUMENTS_3, a3
// In place of a function of the platform, which it calls.
#define RECORD(kind, thread, function, count)                                                    \
    decltype(function) __real_##function;                                                        \
    Signature<decltype(function)>::Result __wrap_##function(PARAMETERS_##count(function)) {      \
        return Pass(Kind::kind, Thread::thread, #function, __real_##function ARGUMENTS_##count); \
    }

extern "C" {
#include "tests/recorder/Functions.h"
}

namespace {

// "ID,KEY=VALUE,..."
std::string Describe(app_control_h request) {
    char* id = nullptr;
    __real_app_control_get_app_id(request, &id);
    const MallocPtr<char> owner(id);
    std::string text = id == nullptr ? "" : id;
    const auto add = [](app_control_h of, const char* key, void* data) {
        char* value = nullptr;
        __real_app_control_get_extra_data(of, key, &value);
        const MallocPtr<char> held(value);
        *static_cast<std::string*>(data) += std::string(",") + key + "=" + value;
        return true;
    };
    app_control_foreach_extra_data(request, add, &text);
    return text;
}

}  // namespace
