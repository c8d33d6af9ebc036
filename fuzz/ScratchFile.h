// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

#include "common/CHandle.h"
#include "fuzz/Check.h"

// A file that holds the input, for code that takes a path. In a folder of its own below $TMPDIR,
// which goes with it.
class ScratchFile {
public:
    explicit ScratchFile(const std::string& name) {
        GErrorPtr error;
        const GStringPtr folder(g_dir_make_tmp("fuzz-XXXXXX", Out(error)));
        Check(folder != nullptr, "there is a folder for the input");
        m_folder = folder.get();
        m_path = m_folder + "/" + name;
    }
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;
    ~ScratchFile() {
        std::error_code error;
        std::filesystem::remove_all(m_folder, error);
    }

    // The path of the file, which holds these bytes.
    const std::string& Hold(const std::uint8_t* data, std::size_t size) {
        std::ofstream file(m_path, std::ios::binary | std::ios::trunc);
        file.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
        file.close();
        Check(file.good(), "the input can be written to a file");
        return m_path;
    }

private:
    std::string m_folder;
    std::string m_path;
};
