// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>
#include <vector>

// Tests that are text: what is done, and indented below it what must come of it. `*` stands for
// anything, `?` for one character; lines that begin with "#" are comments.
namespace Script {

using Texts = std::vector<std::string>;

struct Step {
    int number;        // of its line
    std::string verb;  // the first word
    std::string rest;  // what follows it
    Texts block;       // the indented lines, without the indent
};
// What came of a step, line by line. Of a step whose block says what to do: the block.
using Player = std::function<Texts(const Step& step)>;

// Plays the steps of the file in their order. If something else came of one than is written there,
// the test fails and shows the file as it would have to be.
void Play(const std::string& file, const Player& player);
// The scripts in a folder, in the order of their names.
Texts FilesIn(const std::string& folder);
// The words of a line, as in a shell; `\n` and `\377` stand for a character each, and `x*300` for
// so many of them.
Texts Words(const std::string& line);

}  // namespace Script
