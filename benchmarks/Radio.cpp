// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <functional>
#include <sstream>

#include "benchmarks/FakeBluetooth.h"

// org.bluez for measurements: an adapter, its devices, and phones that refuse each connection at
// once. It does as little as possible itself, so that what it measures is the service and the bus.
// It reads commands, one in a line, and answers each with a line of NAME=NUMBER:
//
//     ready, bare              until the service knows all devices; until bare_subscriber runs
//     ping N                   median of an empty method call to bare_subscriber, in us
//     attempts N               N wake-ups; medians of their steps in us, and of a call before each;
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
//     block FROM TO            a wake-up; the main loop's longest pause between these ms after it
//
// Usage: radio BONDED      the number of phones with a bond

namespace {

using namespace Bench;

double Median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

class Radio : public FakeBluetooth {
public:
    using FakeBluetooth::Add;
    using FakeBluetooth::Advertise;
    using FakeBluetooth::FakeBluetooth;
    using FakeBluetooth::Remove;

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
        const int rules = Rules();
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
                    {"rules", Rules() - rules}});
    }

    // The scan finds the phone. The microseconds until the service stops the discovery, and from
    // the answer to the connection request.
    std::pair<double, double> Find() {
        const std::uint64_t heardUs = NowUs();
        Advertise(0xA0, 0);
        const auto stopUs = static_cast<double>(Await("StopDiscovery") - heardUs);
        const std::uint64_t stoppedUs = LastAnswerUs();
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
        ForgetCalls();
        Message signal(
            New(sd_bus_message_new_signal, kServicePath, kService, "PrePareAndDoAutoConnect"));
        const std::uint64_t sentUs = NowUs();
        Send(signal);
        const auto tookUs = static_cast<double>(Await("StartDiscovery") - sentUs);
        Sync();
        ForgetCalls();
        return tookUs;
    }

    void Sync() {
        AskMainLoop();
        CallNothing();
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
        Asked().clear();
        Advertise(0xA0, 0);
        Await("ConnectProfile");
        Settle();
        return Say({{"asked", static_cast<double>(Asked().size())}});
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
            sd_bus_wait(Bus(), 200);
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

    // Until no other phone is asked; each is, when the one before has refused.
    void Settle() {
        std::size_t before = 0;
        for (int quiet = 0; quiet < 10; quiet = Asked().size() == before ? quiet + 1 : 0) {
            before = Asked().size();
            Sync();
        }
    }
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
