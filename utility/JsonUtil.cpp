// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "utility/JsonUtil.h"

#include <memory>
#include <stdexcept>

#include "autoconnect/src/AutoConnectDbg.h"

namespace Util {

Json::Value JsonUtil::StringToJson(const std::string& text) {
    BTLOG_TRACE();
    BTLOG_INFO("%s", text.c_str());
    const Json::CharReaderBuilder builder;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    Json::Value value;
    std::string errors;
    try {
        if (reader->parse(text.data(), text.data() + text.size(), &value, &errors)) {
            return value;
        }
    } catch (const Json::Exception& e) {
        // The reader throws when the text is nested too deeply.
        errors = e.what();
    }
    throw std::runtime_error(errors);
}

// NOLINTNEXTLINE(readability-const-return-type): the signature is fixed
const std::string JsonUtil::JsonToString(const Json::Value& value) {
    BTLOG_TRACE();
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    return Json::writeString(builder, value);
}

Json::Value Object(std::initializer_list<std::pair<const char*, Json::Value>> members) {
    Json::Value json(Json::objectValue);
    for (const auto& [name, value] : members) {
        json[name] = value;
    }
    return json;
}

}  // namespace Util
