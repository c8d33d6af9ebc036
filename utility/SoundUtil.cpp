// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "utility/SoundUtil.h"

namespace Util {

SoundUtil::SoundUtil()
    : m_soundFiles({{AuiPattern::Connected, "AUI_P_Connected.wav"},
                    {AuiPattern::Disconnected, "AUI_P_Disconnected.wav"}}) {}

void SoundUtil::Play(const std::string& /*fileName*/) {}

void SoundUtil::PlayWavFile(AuiPattern /*pattern*/) {}

void SoundUtil::OnPlayBackCompleted(int /*id*/, void* /*userData*/) noexcept {}

}  // namespace Util
