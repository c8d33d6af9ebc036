// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <glib.h>

#include <sstream>
#include <vector>

#include "common/CHandle.h"
#include "fuzz/Check.h"
#include "fuzz/Input.h"
#include "tools/tvctl/commands/Console.h"
#include "tools/tvctl/trace/Boxes.h"
#include "tools/tvctl/trace/LogText.h"
#include "tools/tvctl/trace/Statistics.h"
#include "tools/tvctl/trace/StatisticsText.h"
#include "tools/tvctl/trace/TimelineText.h"
#include "tools/tvctl/trace/picture/StatisticsSvg.h"
#include "tools/tvctl/trace/picture/TimelineSvg.h"
#include "utility/JsonUtil.h"

// A log for tvctl trace, to its text, its JSON and its picture.

namespace {

using MarkupParserPtr = CPtr<GMarkupParseContext, g_markup_parse_context_free>;

void CheckText(const std::vector<std::string>& lines) {
    std::ostringstream out;
    std::ostringstream err;
    Tvctl::Console console(out, err, {});
    for (const std::string& line : lines) {
        console.PrintLine(line);
    }
    const std::string text = out.str();
    Check(g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr) != FALSE,
          "the text is UTF-8", text);
    Check(text.find('\x1B') == std::string::npos, "no terminal sequence gets through", text);
}

void CheckJson(const Json::Value& value) {
    const std::string json = Util::JsonUtil::JsonToString(value);
    try {
        // As text: a number that is read has another type than the one that was written.
        Check(Util::JsonUtil::JsonToString(Util::JsonUtil::StringToJson(json)) == json,
              "the JSON is read as written", json);
    } catch (const std::exception& e) {
        Check(false, e.what(), json);
    }
}

void CheckSvg(const std::string& svg) {
    static constexpr GMarkupParser kNothing = {};
    const MarkupParserPtr parser(
        g_markup_parse_context_new(&kNothing, G_MARKUP_TREAT_CDATA_AS_TEXT, nullptr, nullptr));
    GErrorPtr error;
    const bool isWhole =
        g_markup_parse_context_parse(parser.get(), svg.data(), static_cast<gssize>(svg.size()),
                                     Out(error)) != FALSE &&
        g_markup_parse_context_end_parse(parser.get(), nullptr) != FALSE;
    Check(isWhole, "the SVG is well-formed", svg);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    // Every JSON text is worth a line for a developer, not millions of them here.
    g_setenv("TV_LOG_LEVEL", "error", FALSE);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Tvctl::Statistics statistics;
    Tvctl::TimelinePicture picture;
    Tvctl::Boxes boxes([&](const Tvctl::WakeUp& wakeUp) {
        CheckText(ToLines(wakeUp, 1));
        CheckJson(ToJson(wakeUp));
        statistics.Add(wakeUp);
        picture.Add(wakeUp);
    });
    Tvctl::LineParser parser;
    Tvctl::LogText text(parser, [&boxes](const Tvctl::LogRecord& record) { boxes.Add(record); });
    text.Add(TextOf(data, size));
    text.End();
    boxes.Finish();
    CheckText(ToLines(statistics, boxes.Count()));
    CheckJson(ToJson(statistics, boxes.Count()));
    CheckSvg(ToSvg(statistics, boxes.Count()));
    CheckSvg(picture.Draw());
    return 0;
}
