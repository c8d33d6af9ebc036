// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <glib.h>

#include <functional>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "common/CHandle.h"
#include "tests/script/Script.h"
#include "utility/BtDeviceTypes.h"

// C++ functions for scripts: called with words, they answer in text.
namespace Callable {

using Script::Texts;
// Takes its arguments from the words; its result and what it wrote into its arguments.
using Function = std::function<std::string(Texts words)>;

inline std::string Text(const std::string& value) {
    if (value.size() > 500) {
        return "(" + std::to_string(value.size()) + " characters)";
    }
    return "\"" + std::string(GStringPtr(g_strescape(value.c_str(), nullptr)).get()) + "\"";
}
inline std::string Text(const char* value) {
    return Text(std::string(value));
}
inline std::string Text(bool value) {
    return value ? "true" : "false";
}
template <typename T>
std::enable_if_t<std::is_arithmetic_v<T> || std::is_enum_v<T>, std::string> Text(T value) {
    return std::to_string(static_cast<long>(value));
}
inline std::string Text(const bt_db_dev_info_s& r) {
    const std::string texts =
        Text(r.remote_address) + Text(r.remote_name) + Text(r.service_name) + Text(r.provider_name);
    const int numbers[] = {r.use_type, r.bt_status, r.profile_type, r.device_type, r.vid, r.pid};
    std::string all = texts;
    for (const int number : numbers) {
        all += " " + std::to_string(number);
    }
    return "(" + all + ")";
}
template <typename T>
std::string Text(const std::vector<T>& values) {
    std::string text;
    for (const T& value : values) {
        text += (text.empty() ? "" : " ") + Text(value);
    }
    return "[" + text + "]";
}

// What holds an argument for a parameter.
template <typename P>
using Held =
    std::conditional_t<std::is_same_v<P, const char*>, std::string,
                       std::remove_cv_t<std::remove_pointer_t<std::remove_reference_t<P>>>>;

// Texts and numbers are taken from the words; what is only written to is not.
template <typename P>
Held<P> Take(Texts& words) {
    using T = Held<P>;
    if constexpr (std::is_same_v<T, std::string> || std::is_arithmetic_v<T> || std::is_enum_v<T>) {
        const std::string word = words.at(0);
        words.erase(words.begin());
        if constexpr (std::is_same_v<T, std::string>) {
            return word;
        } else {
            return static_cast<T>(word == "true" ? 1 : word == "false" ? 0 : std::stol(word));
        }
    } else {
        return T();
    }
}

template <typename P>
P Pass(Held<P>& held) {
    if constexpr (std::is_same_v<P, const char*>) {
        return held.c_str();
    } else if constexpr (std::is_pointer_v<P>) {
        return &held;
    } else {
        return static_cast<P>(held);
    }
}

// What the function may have written; "" for what it only reads.
template <typename P>
std::string Written(const Held<P>& held) {
    using Target = std::remove_pointer_t<std::remove_reference_t<P>>;
    constexpr bool isOutput =
        (std::is_pointer_v<P> || std::is_lvalue_reference_v<P>)&&!std::is_const_v<Target>;
    return isOutput ? " " + Text(held) : "";
}

// `call` is called as R(P...).
template <typename R, typename... P, typename Call>
Function Make(const Call& call) {
    return [call](Texts words) {
        std::tuple<Held<P>...> arguments{Take<P>(words)...};
        return std::apply(
            [&](auto&... held) {
                std::string text;
                if constexpr (std::is_void_v<R>) {
                    call(Pass<P>(held)...);
                } else {
                    text = " " + Text(call(Pass<P>(held)...));
                }
                return (text + ... + Written<P>(held));
            },
            arguments);
    };
}

template <typename R, typename... P>
Function Of(R (*function)(P...)) {
    return Make<R, P...>(function);
}

// On the object that `owner` has at the time of the call.
template <typename Owner, typename Object, typename R, typename... P>
Function Of(Owner& owner, R (Object::*function)(P...)) {
    return Make<R, P...>([&owner, function](auto&&... arguments) -> R {
        return ((*owner).*function)(std::forward<decltype(arguments)>(arguments)...);
    });
}

}  // namespace Callable
