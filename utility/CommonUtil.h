// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

namespace Util {

// Small helpers for text, files, timers and Bluetooth addresses, and the names of Bluetooth result
// codes. Stateless; any thread unless a function says otherwise.
class CommonUtil {
public:
    // Whether `address` is six two-digit hexadecimal groups joined by ":", 17 characters, either
    // case. If not, the reason is logged. Throws nothing.
    static bool IsValidAddress(const std::string& address);

    // The number that up to 8 hexadecimal digits stand for. Leading blanks are skipped, reading
    // stops at the first character that is not a digit, and a text without digits gives 0. Throws
    // std::out_of_range for more than 8 characters.
    static unsigned int convertToUIntFromHexString(const std::string& hex);

    // Case-sensitive; an empty prefix is a prefix of everything.
    static bool StartsWith(const std::string& text, const std::string& prefix);

    // A copy with 'a' to 'z' in upper case, everything else unchanged.
    static std::string ToCapital(const std::string& text);

    // A copy without its ":" characters.
    static std::string RemoveColon(const std::string& text);

    // Whether this is a release image, which carries the file /etc/release.
    static bool IsReleaseImage();

    // Whether a file or folder of that path exists; logged when it does not.
    static bool CheckExist(const std::string& path);

    // Removes the main-loop source *timerId and sets it to 0; nothing for an id of 0. `timerId` is
    // not NULL. Main loop's thread only.
    static void RemoveTimer(unsigned int* timerId);

    // Appends the pieces of `text` to *out, which is not cleared. Every character of `delimiters`
    // is a separator; empty pieces are kept, so an empty text gives one empty piece.
    static void StrSplit(const std::string& text, const std::string& delimiters,
                         std::vector<std::string>* out);

    // The name of a bt_error_e code, "None" for any other number. Valid for the life of the
    // process.
    static const char* ERR_STR(int code);
};

}  // namespace Util
