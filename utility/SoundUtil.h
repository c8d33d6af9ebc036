// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>

namespace Util {

enum class AuiPattern : int { Connected = 0, Disconnected = 1 };

// The short interface sounds of a Bluetooth connection and disconnection. Playback is switched off:
// the operations stay, so that callers need not change, and do nothing.
class SoundUtil {
public:
    SoundUtil();

    void Play(const std::string& fileName);
    void PlayWavFile(AuiPattern pattern);
    // A player's completion callback.
    static void OnPlayBackCompleted(int id, void* userData) noexcept;

protected:
    int m_player = -1;  // none
    int m_playing = 0;
    std::map<AuiPattern, std::string> m_soundFiles;  // bare file names
};

}  // namespace Util
