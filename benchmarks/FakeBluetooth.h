// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <poll.h>
#include <unistd.h>

#include <iostream>
#include <map>
#include <set>
#include <vector>

#include "benchmarks/Message.h"

namespace Bench {

// org.bluez with one adapter and its devices. A phone refuses each connection at once; everything
// else succeeds at once. Notes when each method is called.
class FakeBluetooth {
public:
    explicit FakeBluetooth(int bonded) : m_bonded(bonded) {
        Check(sd_bus_open_system(&m_bus), "the bus");
        Check(sd_bus_add_filter(m_bus, nullptr, OnMessage, this), "filter");
        for (const char* member : {"AddMatch", "RemoveMatch"}) {
            const std::string rule =
                std::string("eavesdrop='true',type='method_call',member='") + member + "'";
            Check(sd_bus_call_method(m_bus, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                     "org.freedesktop.DBus", "AddMatch", nullptr, nullptr, "s",
                                     rule.c_str()),
                  "eavesdrop");
        }
        Check(sd_bus_request_name(m_bus, "org.bluez", 0), "org.bluez");
    }
    FakeBluetooth(const FakeBluetooth&) = delete;
    FakeBluetooth& operator=(const FakeBluetooth&) = delete;
    ~FakeBluetooth() { sd_bus_flush_close_unref(m_bus); }

    // Serves the bus until there is a command.
    bool ReadCommand(std::string& line) {
        while (true) {
            Process();
            pollfd files[] = {{STDIN_FILENO, POLLIN, 0}, {sd_bus_get_fd(m_bus), POLLIN, 0}};
            poll(files, 2, -1);
            if (files[0].revents != 0) {
                return static_cast<bool>(std::getline(std::cin, line));
            }
        }
    }

protected:
    void Add(int first, int number, bool isBonded, bool isHeard) {
        Message signal(New(sd_bus_message_new_signal, "/", kObjectManager, "InterfacesAdded"));
        signal.Append("o", DevicePath(first, number).c_str()).Open('a', "{sa{sv}}");
        signal.Open('e', "sa{sv}").Append("s", kDeviceInterface).Open('a', "{sv}");
        signal.AppendDevice(first, number, isBonded);
        if (isHeard) {
            signal.AppendHeard(first, number, -60);
        }
        Send(signal.Close(3));
    }

    void Remove(int number) {
        Message signal(New(sd_bus_message_new_signal, "/", kObjectManager, "InterfacesRemoved"));
        Send(signal.Append("oas", DevicePath(0xB0, number).c_str(), 1, kDeviceInterface));
    }

    void Advertise(int first, int number) {
        // A phone's own address is random; only the bytes name it.
        const int sender = first == 0xA0 ? 0xFFFFFF : number;
        Message signal(New(sd_bus_message_new_signal, DevicePath(0xB0, sender).c_str(), kProperties,
                           "PropertiesChanged"));
        signal.Append("s", kDeviceInterface).Open('a', "{sv}");
        signal.AppendHeard(first, number, -40 - ++m_heard % 50).Close();
        Send(signal.Append("as", 0));
    }

    template <typename Make, typename... Arguments>
    sd_bus_message* New(Make make, Arguments... arguments) {
        sd_bus_message* message = nullptr;
        Check(make(m_bus, &message, arguments...), "message");
        return message;
    }

    void Send(Message& message) { Check(sd_bus_send(m_bus, message.Get(), nullptr), "send"); }
    void Send(Message&& message) { Send(message); }

    void WaitUntil(std::uint64_t dueUs) {
        for (std::uint64_t now = NowUs(); Process() || now < dueUs; now = NowUs()) {
            sd_bus_wait(m_bus, dueUs > now ? dueUs - now : 0);
        }
    }

    bool Process() {
        bool didAny = false;
        while (Check(sd_bus_process(m_bus, nullptr), "process") > 0) {
            didAny = true;
        }
        return didAny;
    }

    // When the service's next call of that method arrived.
    std::uint64_t Await(const std::string& member) {
        const std::uint64_t untilUs = NowUs() + kAnswerUs;
        std::vector<std::uint64_t>& calls = m_calls[member];
        while (calls.empty()) {
            if (NowUs() > untilUs) {
                std::fprintf(stderr, "radio: the service does not call %s\n", member.c_str());
                std::exit(1);
            }
            if (!Process()) {
                sd_bus_wait(m_bus, 100'000);
            }
        }
        const std::uint64_t at = calls.front();
        calls.erase(calls.begin());
        return at;
    }

    double AskMainLoop() {
        Message call(New(sd_bus_message_new_method_call, kService, "/com/velmora/tv/platform",
                         kProperties, "GetAll"));
        return Call(call.Append("s", "com.velmora.tv.platform.MainLoop"));
    }

    double CallNothing() {
        Message call(New(sd_bus_message_new_method_call, kBare, "/", kBare, "Nothing"));
        return Call(call);
    }

    // The microseconds until the answer; -1 when it is an error.
    double Call(Message& call) {
        struct Answer {
            std::uint64_t us = 0;
            bool isError = false;
        } answer;
        const auto onAnswer = [](sd_bus_message* reply, void* data, sd_bus_error* /*error*/) {
            *static_cast<Answer*>(data) = {NowUs(),
                                           sd_bus_message_is_method_error(reply, nullptr) != 0};
            return 0;
        };
        const std::uint64_t sentUs = NowUs();
        Check(sd_bus_call_async(m_bus, nullptr, call.Get(), onAnswer, &answer, kAnswerUs), "call");
        while (answer.us == 0) {
            if (!Process()) {
                sd_bus_wait(m_bus, kAnswerUs);
            }
        }
        return answer.isError ? -1 : static_cast<double>(answer.us - sentUs);
    }

    [[nodiscard]] sd_bus* Bus() const { return m_bus; }
    // When the last call was answered.
    [[nodiscard]] std::uint64_t LastAnswerUs() const { return m_lastAnswerUs; }
    // How many match rules all programs have more than at the start.
    [[nodiscard]] int Rules() const { return m_rules; }
    // The devices that were asked to connect.
    std::set<std::string>& Asked() { return m_asked; }
    void ForgetCalls() { m_calls.clear(); }

private:
    static int OnMessage(sd_bus_message* message, void* self, sd_bus_error* /*error*/) {
        std::uint8_t type = 0;
        sd_bus_message_get_type(message, &type);
        const char* interface = sd_bus_message_get_interface(message);
        if (type != SD_BUS_MESSAGE_METHOD_CALL || interface == nullptr ||
            interface == std::string("org.freedesktop.DBus.Peer")) {
            return 0;
        }
        static_cast<FakeBluetooth*>(self)->OnCall(message, sd_bus_message_get_member(message));
        return 1;
    }

    void OnCall(sd_bus_message* message, const std::string& member) {
        if (member == "AddMatch" || member == "RemoveMatch") {
            m_rules += member == "AddMatch" ? 1 : -1;
            return;
        }
        m_calls[member].push_back(NowUs());
        if (member == "ConnectProfile") {
            m_asked.insert(sd_bus_message_get_path(message));
            sd_bus_reply_method_errorf(message, "org.bluez.Error.Failed", "%s",
                                       "br-connection-refused");
        } else if (member == "GetManagedObjects") {
            TellObjects(message);
        } else {
            sd_bus_reply_method_return(message, "");
        }
        m_lastAnswerUs = NowUs();
    }

    void TellObjects(sd_bus_message* call) {
        sd_bus_message* made = nullptr;
        Check(sd_bus_message_new_method_return(call, &made), "answer");
        Message reply(made);
        reply.Open('a', "{oa{sa{sv}}}");
        reply.Append("{oa{sa{sv}}}", kAdapter, 1, "org.bluez.Adapter1", 4, "Alias", "s", "TV",
                     "Powered", "b", 1, "Discovering", "b", 0, "UUIDs", "as", 1, kSinkUuid);
        for (int i = 0; i < m_bonded; ++i) {
            reply.Open('e', "oa{sa{sv}}").Append("o", DevicePath(0xA0, i).c_str());
            reply.Open('a', "{sa{sv}}").Open('e', "sa{sv}").Append("s", kDeviceInterface);
            reply.Open('a', "{sv}").AppendDevice(0xA0, i, true).Close(4);
        }
        Send(reply.Close());
    }

    sd_bus* m_bus = nullptr;
    const int m_bonded;
    int m_heard = 0;
    int m_rules = 0;
    std::uint64_t m_lastAnswerUs = 0;
    std::map<std::string, std::vector<std::uint64_t>> m_calls;  // by method: when it came
    std::set<std::string> m_asked;                              // devices
};

}  // namespace Bench
