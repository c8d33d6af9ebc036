// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "platform/sound_manager.h"

#include <cerrno>

#include "platform/linux/config/PlatformState.h"

namespace {

constexpr char kSpeakerMute[] = "tv_speaker_mute";

}  // namespace

int sound_manager_set_tv_master_mute(bool mute) {
    return Platform::SetState("master_mute", mute ? 1 : 0);
}

int sound_manager_set_device_mute(sound_tv_device_e device, bool mute) {
    if (device != SOUND_DEVICE_TV_SPEAKER) {
        return -EINVAL;
    }
    return Platform::SetState(kSpeakerMute, mute ? 1 : 0);
}

int sound_manager_get_device_mute(sound_tv_device_e device, bool* mute) {
    if (device != SOUND_DEVICE_TV_SPEAKER || mute == nullptr) {
        return -EINVAL;
    }
    const auto lookup = Platform::ConfigStore::Instance().Lookup(Platform::StateKey(kSpeakerMute));
    if (IsFailure(lookup.status)) {
        return -EIO;
    }
    *mute = lookup.status == Platform::ConfigStatus::kOk && lookup.value.number != 0;
    return 0;
}
