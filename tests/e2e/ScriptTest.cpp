// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <filesystem>
#include <fstream>
#include <map>

#include "tests/e2e/Bench.h"
#include "tests/script/Script.h"

// Plays the scripts in this folder, each with a bus and a root folder of its own.

namespace {

namespace fs = std::filesystem;
using Script::Step;
using Script::Texts;

class ScriptTest : public Bench, public testing::WithParamInterface<std::string> {
protected:
    Texts Do(const Step& step) {
        const auto verb = m_verbs.find(step.verb);
        return verb != m_verbs.end() ? verb->second(step) : Texts{"an unknown step"};
    }

private:
    using Verb = std::function<Texts(const Step& step)>;

    // A verb of which nothing comes but what it awaits; its block tells what to do.
    template <typename Action>
    static Verb Silent(const Action& action) {
        return [action](const Step& step) {
            action(step);
            return step.block;
        };
    }
    static std::string Text(const Texts& lines) {
        std::string text;
        for (const std::string& line : lines) {
            text += line + "\n";
        }
        return text;
    }

    // A shell's command in the root folder: what it prints, and its status if it fails. Without a
    // block the command has to succeed, whatever it prints.
    Texts Shell(const Step& step) {
        auto [output, end] = RunToEnd("/bin/sh", {"-c", "exec 2>&1; PATH=" BIN_DIR ":$PATH; cd " +
                                                            Root() + "; " + step.rest});
        if (end.empty() && step.block.empty()) {
            return {};
        }
        for (std::string& line : output) {
            for (std::size_t at = 0; (at = line.find(Root())) != std::string::npos;) {
                line.replace(at, Root().size(), "ROOT");
            }
        }
        if (!end.empty()) {
            output.push_back("[" + end + "]");
        }
        return output;
    }
    // The scenario in the block, or in a file next to the script.
    void Simulate(const Step& step) {
        std::string scenario = Text(step.block);
        if (!step.rest.empty()) {
            std::ifstream file(fs::path(GetParam()).parent_path() / step.rest);
            scenario.assign(std::istreambuf_iterator<char>(file), {});
        }
        StartSimulator(scenario);
    }
    // FILE STATEMENT: another program, whose connection stays until the next one.
    void Sql(const Step& step) {
        const Texts words = Script::Words(step.rest);
        ASSERT_EQ(sqlite3_open((Root() + "/" + words.at(0)).c_str(), Out(m_other)), SQLITE_OK);
        ASSERT_EQ(sqlite3_exec(m_other.get(), words.at(1).c_str(), nullptr, nullptr, nullptr), 0)
            << sqlite3_errmsg(m_other.get());
    }
    // NAME [ARGUMENTS [PATH INTERFACE]], the arguments as GLib writes a variant.
    void Signal(const Step& step) {
        const Texts words = Script::Words(step.rest);
        GVariant* arguments = words.size() > 1 ? g_variant_new_parsed(words[1].c_str()) : nullptr;
        if (words.size() > 3) {
            Emit(words[0].c_str(), arguments, words[2].c_str(), words[3].c_str());
        } else {
            Emit(words[0].c_str(), arguments);
        }
    }

    SqlitePtr m_other;
    const std::map<std::string, Verb> m_verbs = {
        {"$", [this](const Step& step) { return Shell(step); }},
        {"tv", Silent([this](const Step& step) { SetUpTv(Script::Words(step.rest)); })},
        {"simulator", Silent([this](const Step& step) { Simulate(step); })},
        {"kill-simulator", Silent([this](const Step&) { KillSimulator(); })},
        {"service", Silent([this](const Step&) { StartService(); })},
        {"service-ends", Silent([this](const Step&) { EXPECT_EQ(AwaitEnd(), ""); })},
        {"stall", Silent([this](const Step& step) { Stall(std::stoi(step.rest)); })},
        {"wake", Silent([this](const Step&) { Wake(); })},
        {"signal", Silent([this](const Step& step) { Signal(step); })},
        {"call", [this](const Step& step) { return Texts{Call(step.rest.c_str())}; }},
        {"own", Silent([this](const Step& step) { Own(step.rest.c_str()); })},
        {"discover", Silent([this](const Step& step) { Discover(step.rest.c_str()); })},
        {"sql", Silent([this](const Step& step) { Sql(step); })},
        {"sql-ends", Silent([this](const Step&) { m_other.reset(); })},
        {"log", Silent([this](const Step& step) { AwaitLog(step.rest); })},
        {"event", Silent([this](const Step& step) { AwaitEvent(step.rest); })},
        {"logged", Silent([this](const Step& step) { EXPECT_GT(CountLog(step.rest), 0U); })},
        {"count", [this](const Step& s) { return Texts{std::to_string(CountLog(s.rest))}; }},
    };
};

TEST_P(ScriptTest, ComesTrue) {
    Script::Play(GetParam(), [this](const Step& step) { return Do(step); });
}

INSTANTIATE_TEST_SUITE_P(, ScriptTest, testing::ValuesIn(Script::FilesIn(SCRIPT_DIR)),
                         [](const auto& file) { return fs::path(file.param).stem().string(); });

}  // namespace
