// SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
// SPDX-License-Identifier: Apache-2.0
#include "tools/tv-sim/Scenario.h"

namespace TvSim {

const char kScenarioHelp[] =
    R"(A scenario is a key file: [SECTION] lines, KEY=VALUE lines, comments in lines of their own that
begin with '#'. Every section and key may be left out except a phone's address. Lists are separated by ';'.

[scenario]
  description=               one line, for lists of scenarios

[adapter]                    the TV's Bluetooth adapter
  number=0                   of its path, /org/bluez/hciN
  address=00:AA:01:00:00:00
  name=tv
  present=true               false: there is none, until appears-after-ms
  powered=true               bluetoothd switches it on just after it appeared
  appears-after-ms=0         after the start; 0: at once, or never when present=false
  powers-on-after-ms=0       after it appeared or powered off by itself; 0: never
  powers-off-after-ms=0      it powers off so long after the first discovery began; 0: never
  pulled-after-ms=0          it is pulled out so long after a discovery began; 0: never
  forgets-after-ms=30000     a device that is not bonded is forgotten, after it was heard last
  discovery-takes-ms=5       from the request until it runs and the request is answered
  others-discover=false      true: another program discovers on it all the time
  knows-pattern=true         false: an older bluetoothd, a discovery filter has no Pattern
                             What bluetoothd does with calls:
  silent-methods=            methods of org.bluez that are never answered, e.g. StartDiscovery;Play
  refused-once=              METHOD:ERROR;... the first call of the method is refused with the error
  answers-after=             METHOD:MS;... the answer comes so long after the effect, e.g.
                             StartDiscovery:1200;Play:300

[adapter second]             another one, when this section is there: the keys of [adapter] but for
                             calls; number=1, name=tv #2, address=00:AA:01:00:00:01

[phone NAME]                 any number of them
  address=AA:BB:CC:DD:EE:FF  needed
  name=NAME                  what the phone calls itself
  registered=on              on, off or no: how the runner registers it with the service
  adapter=first              first or second: which one is in its reach and has its bond
  bonded=true
  class=0x5A020C
  modalias=usb:v1D6Bp0246d0542
  advertises=true            identity: as a phone without the TV's application does, without
                             manufacturer data and from a private address; bluetoothd reports a
                             bonded one as the device that it is
  advertise-after-ms=1000    after each start of a discovery
  advertise-every-ms=200
  advertise-count=0          0: until the discovery ends
  advertise-from=random      random, public (its own address) or AA:BB:CC:DD:EE:FF
  connectable=true           false: forgotten as soon as the discovery ends
  manufacturer-data=         0xFFFF:HEXBYTES;... ; default: 16 bytes with its address at 7 to 12
  connect=accept             accept, never (no answer) or an error, for instance
                             org.bluez.Error.Failed:br-connection-page-timeout
  first-connect=             how the first request is answered; default: as connect says
  link-goes-down=false       true: before each refusal the link comes up and goes down again
  connect-after-ms=60        until accepted or refused
  connects-by-itself-after-ms=0   after the adapter came up; 0: never
  disconnects-after-ms=0     after it was connected; 0: never
  player=paused              playing, paused, stopped, forward-seek, reverse-seek, error or none, which
                             is a phone without remote control; one that has no player running
                             shows stopped and ignores Play
  player-after-ms=40         after the connection was answered
  status-after-ms=30         after the player appeared
  plays-on-play=true         false: the player ignores Play, which is answered all the same

[strangers]                  devices around that advertise
  count=500
  every-ms=100               each stranger's interval, 10 or more
  rotate-address-every=0     advertisements until a stranger takes a new address; 0: never
  connectable=true
  manufacturer-data=random   random or 0xFFFF:HEXBYTES;...

Only the runner uses the rest.

[tv]                         what it sets before it starts the service
  zemi=true
  wakeup-reason=1
  ambient-mode=1
  ambient-type=1
  features=                  FEATURE=VALUE;...
  keys=                      configuration keys, KEY=VALUE;...

[wake]
  before=                    settings that phones send before the wake-up, PHONE:on or PHONE:off;...
  count=1                    wake-ups
  every-ms=0                 from one wake-up to the next

[events]                     what else happens after the first wake-up
  MS=EVENT;...               so many ms after it, in this order:
                             wake              the TV wakes
                             set KEY VALUE     a program writes a configuration key; numbers, true
                                               and false are written as such, VALUE may be empty
                             unset KEY         it removes the key
                             update TEXT       a phone sends a setting: TEXT as it is, or nothing
                             check KEY VALUE   the key must hold that
                             KEY, VALUE and TEXT may hold {PHONE}, too

[expect]                     texts may hold {PHONE}, which stands for that phone's address
  until=                     what ends the run: log:TEXT in the service's log or sim:TEXT in the
                             simulator's events; without it the run lasts for within-ms. It does not
                             end before the last event
  within-ms=30000            after the first wake-up; then everything expected must be there
  settle-ms=0                so long it must stay so after the end
  log=                       texts that must come in the service's log, in this order
  sim=                       texts that must come in the simulator's events, in this order
  exactly=                   the service's own messages, tag BT_AUTO_CONNECT, without debug, from the
                             first wake-up on: these and no others. Each with its priority, such
                             as I +;W Turn On TV : 1 for the lines "I BT_AUTO_CONNECT: ... > +"
  never=                     texts that must come neither there nor in the simulator's events
  connected=                 the phone that is connected at the end; empty: none; left out: any
  playing=                   the phone that plays at the end, likewise
)";

}  // namespace TvSim
