# SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
# SPDX-License-Identifier: Apache-2.0
"""What is measured, what it should cost, and what CI allows it to cost."""
from typing import NamedTuple, Optional


class Row(NamedTuple):
    key: str
    what: str
    unit: str
    # What counts: the measured number ("value"), how many times the floor it is ("times"), or how
    # much more than the floor ("over").
    counts: str
    # At most so much should be reached; None where there is only something to know.
    budget: Optional[float]
    # At most so much passes ./bench --smoke: what it was when it was last looked at, and 5 % more
    # for counts and ratios. Lower it with each improvement. None for what is not stable enough.
    gate: Optional[float]

    def result(self, measured, floor):
        if self.counts == "times":
            return measured / floor
        return measured - floor if self.counts == "over" else measured


# Flat, for memory: the pages that an allocator holds or not come and go.
KEPT = 100

ROWS = [Row(*row) for row in (
    ("resident", "resident memory, idle", "kB", "times", 1.15, 1.36),
    ("dirty", "private dirty memory, idle", "kB", "times", 1.15, 1.36),
    ("dirty_stderr", "private dirty memory, idle, log to standard error", "kB", "times", 1.15,
     1.36),
    ("threads", "threads", "", "over", 1, 1),
    ("wakeups", "wake-ups a minute, idle", "", "over", 0, 0),
    ("start", "start to name, state on disk", "ms", "times", 1.2, None),
    ("start_memory", "start to name, state in memory", "ms", "times", 1.2, None),
    ("start_count", "start to name", "instructions", "times", 1.15, 1.36),
    ("wake", "wake-up to StartDiscovery; floor: an empty call", "us", "times", 2, None),
    ("stop", "phone's advertisement to StopDiscovery; floor: an empty call", "us", "times", 1,
     None),
    ("connect", "answer to that to ConnectProfile; floor: an empty call", "us", "times", 1, None),
    ("attempt", "attempt, from the wake-up to two refusals", "instructions", "value", None,
     2400000),
    ("advert", "another device's advertisement, no scan", "instructions", "times", 1.3, 1.04),
    ("advert_scan", "another device's advertisement in a scan, logged", "instructions", "times",
     1.3, 1.12),
    ("advert_own", "an advertisement in a scan, without the bus library", "instructions", "value",
     None, 72000),
    ("advert_kept", "memory left by 20,000 advertisements", "kB", "value", KEPT, 200),
    ("storm", "storm, 2,000/s for 5 s: phone recognised", "ms", "value", 50, None),
    ("storm_lost", "storm: lost of 100 phones that appear in it", "", "value", 0, None),
    ("storm_kept", "storm: memory left when its 5,000 devices are gone", "kB", "value", KEPT, None),
    ("burst", "10,000 messages at once: phone recognised", "ms", "value", None, None),
    ("burst_lost", "10,000 at once: lost of 100 phones that appear in it", "", "value", 0, None),
    ("burst_kept", "10,000 at once: memory left when the devices are gone", "kB", "value", KEPT,
     None),
    ("devices_kept", "memory left by 5,000 devices that came and went", "kB", "value", KEPT, 3500),
    ("devices_again", "memory left by the same 5,000 a second time", "kB", "value", KEPT, 500),
    ("devices_most", "memory left by 50,000 devices that came and went", "kB", "value", KEPT, None),
    ("rebuild", "list of 10,000 phones rebuilt; floor: ten times one of 1,000", "instructions",
     "times", 1.1, 1.05),
    ("rebuild_one", "list rebuilt, for each phone", "instructions", "value", None, 18100),
    ("look_up", "look-up among 10,000 phones; floor: among 10", "instructions", "times", 1, 1),
    ("walk_block", "walk over 10,000 phones without bond: longest block", "ms", "value", 20, None),
    ("walk", "walk over 300 phones, 600 devices known; floor: none known", "instructions", "times",
     1, 1.05),
    ("config_read", "key read; floor: the bare prepared statement", "us", "times", 1.3, None),
    ("config_read_count", "key read; floor: the bare prepared statement", "instructions", "times",
     1.3, 2.85),
    ("config_write", "key written durably; floor: one flush of the disk", "us", "times", None,
     None),
    ("config_write_count", "key written", "instructions", "value", None, 90000),
    ("change", "a change reaches another process's callback", "ms", "value", 5, None),
    ("locked", "store locked by another process: longest block in a wake-up", "ms", "value", 100,
     None),
    ("database_read", "device's record read; floor: open, ask, close", "us", "times", 1.2, None),
    ("database_read_count", "device's record read; floor: open, ask, close", "instructions",
     "times", 1.2, 1.3),
    ("database_update", "device's record changed; floor: open, change, close", "us", "times", 1.2,
     None),
    ("database_update_count", "device's record changed; floor: open, change, close",
     "instructions", "times", 1.2, 1.36),
    ("log_journal", "log line to the journal; floor: a bare send", "us", "times", 1.3, None),
    ("log_journal_count", "log line to the journal", "instructions", "value", None, 3150),
    ("log_stderr", "log line to standard error; floor: a bare write", "us", "times", 1.3, None),
    ("log_stderr_count", "log line to standard error", "instructions", "value", None, 2150),
    ("log_filtered", "filtered line; floor: an empty call", "instructions", "over", 10, 17),
    ("log_tracer", "filtered tracer; floor: two empty calls", "instructions", "over", 20, 500),
    ("soak_kept", "memory left by 10,000 attempts (--smoke: 1,000)", "kB", "value", KEPT, 200),
    ("soak_descriptors", "descriptors left by these attempts", "", "value", 0, 0),
    ("soak_threads", "threads left by these attempts", "", "value", 0, 0),
    ("soak_rules", "match rules left by these attempts", "", "value", 0, 0),
)]
