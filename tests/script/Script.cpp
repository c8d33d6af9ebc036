// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tests/script/Script.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "common/CHandle.h"

namespace Script {

namespace {

constexpr const char* kIndent = "    ";

std::string Joined(const Texts& lines, const std::string& before) {
    std::string text;
    for (const std::string& line : lines) {
        text += before + line + "\n";
    }
    return text;
}

// The steps, each with the comments and the empty lines before it.
std::vector<std::pair<std::string, Step>> Read(const std::string& file) {
    std::vector<std::pair<std::string, Step>> steps;
    std::string comments;
    std::ifstream lines(file);
    int number = 0;
    for (std::string line; std::getline(lines, line);) {
        ++number;
        if (line.empty() || line[0] == '#') {
            comments += line + "\n";
        } else if (line[0] != ' ') {
            Step step = {number, "", "", {}};
            std::istringstream words(line);
            std::getline(words, step.verb, ' ');
            std::getline(words, step.rest);
            steps.emplace_back(std::exchange(comments, ""), step);
        } else if (!steps.empty()) {
            steps.back().second.block.push_back(line.substr(std::strlen(kIndent)));
        }
    }
    return steps;
}

// What a word stands for.
std::string Meant(const std::string& word) {
    std::string text;
    if (word.size() > 2 && word[1] == '*' && g_ascii_isdigit(word[2])) {
        text.assign(std::stoul(word.substr(2)), word[0]);
        return text;
    }
    for (std::size_t i = 0; i < word.size(); ++i) {
        if (word[i] != '\\') {
            text += word[i];
        } else if (word.at(++i) == 'n') {
            text += '\n';
        } else {
            text += static_cast<char>(std::stoi(word.substr(i, 3), nullptr, 8));
            i += 2;
        }
    }
    return text;
}

Texts Came(const Player& player, const Step& step) {
    try {
        return player(step);
    } catch (const std::exception& e) {
        return {std::string("failed: ") + e.what()};
    }
}

}  // namespace

void Play(const std::string& file, const Player& player) {
    std::string asItWent;
    for (const auto& [comments, step] : Read(file)) {
        const Texts came = Came(player, step);
        const bool isAsWritten = g_pattern_match_simple(Joined(step.block, "").c_str(),
                                                        Joined(came, "").c_str()) != FALSE;
        EXPECT_TRUE(isAsWritten) << file << ":" << step.number << ": " << step.verb << " "
                                 << step.rest << "\n"
                                 << Joined(came, kIndent);
        asItWent += comments + step.verb + (step.rest.empty() ? "" : " ") + step.rest + "\n" +
                    Joined(isAsWritten ? step.block : came, kIndent);
        if (testing::Test::HasFatalFailure()) {
            break;
        }
    }
    EXPECT_FALSE(asItWent.empty()) << file << " has no step";
    if (testing::Test::HasFailure()) {
        std::cout << "The script as it went:\n" << asItWent;
    }
}

Texts FilesIn(const std::string& folder) {
    Texts files;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().extension() == ".script") {
            files.push_back(entry.path().string());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

Texts Words(const std::string& line) {
    int count = 0;
    CPtr<gchar*, g_strfreev> words;
    if (g_shell_parse_argv(line.c_str(), &count, Out(words), nullptr) == FALSE) {
        return {};
    }
    Texts texts;
    for (int i = 0; i < count; ++i) {
        texts.push_back(Meant(words.get()[i]));
    }
    return texts;
}

}  // namespace Script
