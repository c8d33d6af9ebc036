// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <poll.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <functional>
#include <iostream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

// org.bluez for measurements: an adapter, its devices, and phones that refuse each connection at
// once. It does as little as possible itself, so that what it measures is the service and the bus.
// It reads commands, one in a line, and answers each with a line of NAME=NUMBER:
//
//     ready, bare              until the service knows all devices; until bare_subscriber runs
//     ping N                   median of an empty method call to bare_subscriber, in us
//     attempts N               N wake-ups; medians of their steps in us, and of a call between
//     them;
//                              how many match rules others have more than before
//     wake, find, miss         a wake-up, until the scan runs; its rest, with and without the phone
//     sync                     until the service and bare_subscriber did all that was sent
//     add FIRST N STEP         devices appear; after each STEP, if given, the service catches up
//     remove FIRST N STEP      they go
//     advertise FIRST N STEP   each of these devices sends an advertisement
//     storm DEVICES MESSAGES RATE BONDS
//                              devices appear and advertise during a scan, RATE messages a second
//                              (0: as fast as the bus carries), phones with a bond among them; the
//                              first phone advertises before the last tenth. When that was seen
//     walk                     an attempt; how many different phones were asked to connect
//     block FROM TO            a wake-up; the main loop's longest pause from then to then, all in
//     ms
//
// Usage: radio BONDED      the number of phones with a bond

namespace {

constexpr char kService[] = "com.velmora.tv.bt.autoconnect";
constexpr char kServicePath[] = "/com/velmora/tv/bt/autoconnect";
constexpr char kBare[] = "com.velmora.tv.bench.Bare";
constexpr char kAdapter[] = "/org/bluez/hci0";
constexpr char kDeviceInterface[] = "org.bluez.Device1";
constexpr char kObjectManager[] = "org.freedesktop.DBus.ObjectManager";
constexpr char kProperties[] = "org.freedesktop.DBus.Properties";
constexpr char kSinkUuid[] = "0000110b-0000-1000-8000-00805f9b34fb";
constexpr std::uint64_t kAnswerUs = 60'000'000;

std::uint64_t NowUs() {
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * 1'000'000 +
           static_cast<std::uint64_t>(now.tv_nsec) / 1000;
}

int Check(int result, const char* what) {
    if (result < 0) {
        std::fprintf(stderr, "radio: %s: %s\n", what, strerror(-result));
        std::exit(1);
    }
    return result;
}

double Median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// A phone's address begins with A0, a stranger's with B0.
std::string Address(int first, int number, char separator) {
    char text[18];
    std::snprintf(text, sizeof text, "%02X%c00%c00%c%02X%c%02X%c%02X", first, separator, separator,
                  separator, (number >> 16) & 0xFF, separator, (number >> 8) & 0xFF, separator,
                  number & 0xFF);
    return text;
}

std::string DevicePath(int first, int number) {
    return std::string(kAdapter) + "/dev_" + Address(first, number, '_');
}

class Message {
public:
    explicit Message(sd_bus_message* message) : m_message(message) {}
    Message(const Message&) = delete;
    Message& operator=(const Message&) = delete;
    ~Message() { sd_bus_message_unref(m_message); }

    template <typename... Values>
    Message& Append(const char* types, Values... values) {
        Check(sd_bus_message_append(m_message, types, values...), "append");
        return *this;
    }
    Message& Open(char type, const char* contents) {
        Check(sd_bus_message_open_container(m_message, type, contents), "open");
        return *this;
    }
    Message& Close(int levels = 1) {
        for (int i = 0; i < levels; ++i) {
            Check(sd_bus_message_close_container(m_message), "close");
        }
        return *this;
    }
    // RSSI and ManufacturerData, the bytes 7 to 12 of which name a device.
    Message& AppendHeard(int first, int number, int rssi) {
        const std::uint8_t bytes[16] = {1,
                                        2,
                                        3,
                                        4,
                                        5,
                                        6,
                                        7,
                                        static_cast<std::uint8_t>(first),
                                        0,
                                        0,
                                        static_cast<std::uint8_t>(number >> 16),
                                        static_cast<std::uint8_t>(number >> 8),
                                        static_cast<std::uint8_t>(number)};
        Append("{sv}", "RSSI", "n", rssi);
        Open('e', "sv").Append("s", "ManufacturerData").Open('v', "a{qv}").Open('a', "{qv}");
        Open('e', "qv").Append("q", 0xFFFF).Open('v', "ay");
        Check(sd_bus_message_append_array(m_message, 'y', bytes, sizeof bytes), "bytes");
        return Close(5);
    }
    // What bluetoothd tells of a device that was just made, but for what was heard of it.
    Message& AppendDevice(int first, int number, bool isBonded) {
        const std::string address = Address(first, number, ':');
        return Append("{sv}{sv}{sv}{sv}{sv}{sv}{sv}{sv}{sv}{sv}{sv}{sv}",             //
                      "Address", "s", address.c_str(), "AddressType", "s", "random",  //
                      "Alias", "s", address.c_str(), "Paired", "b", isBonded,         //
                      "Bonded", "b", isBonded, "Trusted", "b", isBonded,              //
                      "Blocked", "b", 0, "LegacyPairing", "b", 0,                     //
                      "Connected", "b", 0, "UUIDs", "as", 0,                          //
                      "Adapter", "o", kAdapter, "ServicesResolved", "b", 0);
    }
    [[nodiscard]] sd_bus_message* Get() const { return m_message; }

private:
    sd_bus_message* m_message;
};

class Radio {
public:
    explicit Radio(int bonded) : m_bonded(bonded) {
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
    Radio(const Radio&) = delete;
    Radio& operator=(const Radio&) = delete;
    ~Radio() { sd_bus_flush_close_unref(m_bus); }

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

    void AwaitService() {
        while (AskMainLoop() < 0) {
            usleep(10'000);
        }
        Await("GetManagedObjects");
        Sync();
    }

    void AwaitBare() {
        while (CallNothing() < 0) {
            usleep(10'000);
        }
    }

    std::string Ping(int count) {
        std::vector<double> times;
        for (int i = 0; i < count; ++i) {
            times.push_back(CallNothing());
        }
        return Say({{"call", Median(times)}});
    }

    std::string Attempts(int count) {
        std::vector<double> call;
        std::vector<double> start;
        std::vector<double> stop;
        std::vector<double> connect;
        const int rules = m_rules;
        for (int i = 0; i < count; ++i) {
            call.push_back(CallNothing());
            start.push_back(Wake());
            const auto [stopUs, connectUs] = Find();
            stop.push_back(stopUs);
            connect.push_back(connectUs);
        }
        return Say({{"call", Median(call)},
                    {"start", Median(start)},
                    {"stop", Median(stop)},
                    {"connect", Median(connect)},
                    {"rules", m_rules - rules}});
    }

    // The scan finds the phone. The microseconds until the service stops the discovery, and from
    // the answer to the connection request.
    std::pair<double, double> Find() {
        const std::uint64_t heardUs = NowUs();
        Advertise(0xA0, 0);
        const auto stopUs = static_cast<double>(Await("StopDiscovery") - heardUs);
        const std::uint64_t stoppedUs = m_lastAnswerUs;
        const auto connectUs = static_cast<double>(Await("ConnectProfile") - stoppedUs);
        // After the refusal the list is tried, which has the same phone.
        Await("ConnectProfile");
        Sync();
        return {stopUs, connectUs};
    }

    // The scan ends by itself.
    void Miss() {
        Await("StopDiscovery");
        Await("ConnectProfile");
        Sync();
    }

    // Microseconds until the service starts the discovery.
    double Wake() {
        m_calls.clear();
        Message signal(
            New(sd_bus_message_new_signal, kServicePath, kService, "PrePareAndDoAutoConnect"));
        const std::uint64_t sentUs = NowUs();
        Send(signal);
        const auto tookUs = static_cast<double>(Await("StartDiscovery") - sentUs);
        Sync();
        m_calls.clear();
        return tookUs;
    }

    void Sync() {
        AskMainLoop();
        CallNothing();
    }

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

    // Does `what` with each number; after each `step` the others catch up.
    void ForEach(int first, int count, int step, const std::function<void(int)>& what) {
        for (int i = first; i < first + count; ++i) {
            what(i);
            if (step != 0 && i % step == 0) {
                Sync();
            }
        }
        Sync();
    }

    std::string Storm(int devices, int messages, int rate, int bonds) {
        const int phoneAt = messages - messages / 10;
        Wake();
        const std::uint64_t beganUs = NowUs();
        std::uint64_t heardUs = 0;
        for (int i = 0; i < messages; ++i) {
            WaitUntil(rate == 0 ? 0
                                : beganUs + 1'000'000ULL * static_cast<unsigned>(i) /
                                                static_cast<unsigned>(rate));
            if (bonds > 1 && i % (messages / bonds) == 1) {
                Add(0xA0, i / (messages / bonds), true, false);
            }
            if (i == phoneAt) {
                heardUs = NowUs();
                Advertise(0xA0, 0);
            }
            if (i < devices) {
                Add(0xB0, i, false, true);
            } else {
                Advertise(0xB0, i % devices);
            }
        }
        const auto tookUs = static_cast<double>(Await("StopDiscovery") - heardUs);
        const auto sentUs = static_cast<double>(NowUs() - beganUs);
        Await("ConnectProfile");
        Settle();
        return Say({{"recognised", tookUs / 1000}, {"rate", messages * 1e6 / sentUs}});
    }

    std::string Walk() {
        Wake();
        m_asked.clear();
        Advertise(0xA0, 0);
        Await("ConnectProfile");
        Settle();
        return Say({{"asked", static_cast<double>(m_asked.size())}});
    }

    std::string Block(int fromMs, int toMs) {
        Message signal(
            New(sd_bus_message_new_signal, kServicePath, kService, "PrePareAndDoAutoConnect"));
        const auto from = NowUs() + 1000 * static_cast<std::uint64_t>(fromMs);
        const auto to = NowUs() + 1000 * static_cast<std::uint64_t>(toMs);
        Send(signal);
        double longest = 0;
        while (NowUs() < to) {
            const double us = AskMainLoop();
            longest = std::max(longest, NowUs() < from ? 0 : us);
            sd_bus_wait(m_bus, 200);
        }
        return Say({{"block", longest / 1000}});
    }

private:
    using Values = std::vector<std::pair<const char*, double>>;

    static std::string Say(const Values& values) {
        std::ostringstream line;
        for (const auto& [name, value] : values) {
            line << name << '=' << value << ' ';
        }
        return line.str();
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
        while (Process() || NowUs() < dueUs) {
            sd_bus_wait(m_bus, dueUs > NowUs() ? dueUs - NowUs() : 0);
        }
    }

    bool Process() {
        bool didAny = false;
        while (Check(sd_bus_process(m_bus, nullptr), "process") > 0) {
            didAny = true;
        }
        return didAny;
    }

    // Until no other phone is asked; each is, when the one before has refused.
    void Settle() {
        std::size_t before = 0;
        for (int quiet = 0; quiet < 10; quiet = m_asked.size() == before ? quiet + 1 : 0) {
            before = m_asked.size();
            Sync();
        }
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

    static int OnMessage(sd_bus_message* message, void* self, sd_bus_error* /*error*/) {
        std::uint8_t type = 0;
        sd_bus_message_get_type(message, &type);
        const char* interface = sd_bus_message_get_interface(message);
        if (type != SD_BUS_MESSAGE_METHOD_CALL || interface == nullptr ||
            interface == std::string("org.freedesktop.DBus.Peer")) {
            return 0;
        }
        static_cast<Radio*>(self)->OnCall(message, sd_bus_message_get_member(message));
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
    std::set<std::string> m_asked;                              // devices, to connect
};

// The line that answers a command; empty when there is no such command.
std::string Obey(Radio& radio, const std::string& line) {
    std::istringstream words(line);
    std::string command;
    int numbers[4] = {};
    words >> command >> numbers[0] >> numbers[1] >> numbers[2] >> numbers[3];
    const auto [a, b, c, d] = numbers;
    const std::map<std::string, std::function<std::string()>> commands = {
        {"ready", [&] { return radio.AwaitService(), "done=1"; }},
        {"bare", [&] { return radio.AwaitBare(), "done=1"; }},
        {"ping", [&] { return radio.Ping(a); }},
        {"attempts", [&] { return radio.Attempts(a); }},
        {"wake", [&] { return "start=" + std::to_string(radio.Wake()); }},
        {"find", [&] { return radio.Find(), "done=1"; }},
        {"miss", [&] { return radio.Miss(), "done=1"; }},
        {"sync", [&] { return radio.Sync(), "done=1"; }},
        {"add",
         [&] {
             radio.ForEach(a, b, c, [&](int i) { radio.Add(0xB0, i, false, true); });
             return "done=1";
         }},
        {"remove",
         [&] { return radio.ForEach(a, b, c, [&](int i) { radio.Remove(i); }), "done=1"; }},
        {"advertise",
         [&] {
             radio.ForEach(a, b, c, [&](int i) { radio.Advertise(0xB0, i); });
             return "done=1";
         }},
        {"storm", [&] { return radio.Storm(a, b, c, d); }},
        {"walk", [&] { return radio.Walk(); }},
        {"block", [&] { return radio.Block(a, b); }},
    };
    const auto found = commands.find(command);
    return found == commands.end() ? "" : found->second();
}

}  // namespace

int main(int argc, char** argv) {
    std::cin.sync_with_stdio(false);
    Radio radio(argc > 1 ? std::atoi(argv[1]) : 1);
    std::string line;
    std::cout << "ready=1" << std::endl;
    while (radio.ReadCommand(line)) {
        const std::string answer = Obey(radio, line);
        if (answer.empty()) {
            std::fprintf(stderr, "radio: no command: %s\n", line.c_str());
            return 2;
        }
        std::cout << answer << std::endl;
    }
}
