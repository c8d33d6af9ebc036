// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/media-player/MediaPlayer.h"

int main() {
    MediaPlayer player;
    return player.Run();
}
