// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "common/Source.h"
#include "platform/linux/bluez/Deadline.h"
#include "platform/linux/bluez/Mirror.h"
#include "platform/linux/bluez/Scan.h"

namespace Bluez {

// An A2DP connection that was asked for, until it is known what became of it: waits until the radio
// is done with scans, asks bluetoothd, and asks again where that helps. The log says why it fails.
// Dropping it gives it up. Main loop only.
class ConnectRequest : public std::enable_shared_from_this<ConnectRequest> {
public:
    // `result`: BT_ERROR_NONE or an error of the Bluetooth interface.
    using Done = std::function<void(const ConnectRequest& request, int result)>;

    // `address` is well-formed, upper case. `done` runs once, on the main loop, at the latest 12 s
    // from now; it may drop the request. The mirror must outlive it.
    ConnectRequest(const Mirror& mirror, std::string address, Done done);

    // To be called once, when no other request has the radio.
    void Start(Scan& scan);
    // Another phone is asked for: ends as soon as bluetoothd is done with this one.
    void Overtake();
    // A link to the phone went down, or its device was removed.
    void OnLinkLost() { m_isLinkLost = true; }
    // Ends it with that result.
    void Fail(int result, const std::string& reason);

    // Object path of the phone; empty while another request or the scan is waited for.
    [[nodiscard]] const std::string& Path() const { return m_device; }
    [[nodiscard]] const std::string& Address() const { return m_address; }
    [[nodiscard]] bool IsOvertaken() const { return m_givenUp == BT_ERROR_CANCELLED; }

private:
    void Begin();
    void Attempt();
    void OnAnswered(const GError* error);
    [[nodiscard]] bool HadLink() const;
    void AskForLink(int result, const std::string& reason);
    void RepeatForLink();
    void Repeat(int pauseMs);
    void OnDeadline();
    void GiveUp(bt_error_e result);
    void Explain(const std::string& reason);
    void End(int result);

    const Mirror& m_mirror;
    std::string m_address;
    Done m_done;
    std::string m_device;
    Call m_attempt;
    Call m_cancellation;
    Deadline m_deadline;
    Timer m_pause;
    bt_error_e m_givenUp = BT_ERROR_NONE;  // it is being cancelled, and ends with that
    bool m_isExplained = false;            // the log says why it fails
    bool m_wasLinked = false;              // there was a link when the attempt began
    bool m_isLinkLost = false;             // a link went down during the attempt
    bool m_isRepeated = false;             // because a link went down
};

}  // namespace Bluez
