# SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
# SPDX-License-Identifier: Apache-2.0
"""What is told of the measurements: the gates' verdict, the document and its picture."""
import datetime
import html
import os
import re

from rows import ROWS

DOCS = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "docs")



HEAD = """<!-- SPDX-FileCopyrightText: 2026 The bt-autoconnect authors -->
<!-- SPDX-License-Identifier: Apache-2.0 -->
# Measurements

`./bench` wrote this document; it measures everything again and replaces it
([Contributing](contributing.md#speed-and-size)). {date}, on {machine}.

Most things are measured beside a floor: a program that does the least that is possible, in the same
minute on the same machine, in turns. The medians are shown. Only ratios, differences from a floor
and instruction counts can be compared between machines. The floor for memory, threads, wake-ups and
the start only owns a bus name, with the same libraries linked. The one for advertisements subscribes
to the same signals with the same bus library, unpacks them and does nothing. Latencies are in
"calls": the round trip of an empty method call over the same bus. `./bench --smoke`, which
continuous integration runs, fails when a result is above the last column.

![Each result beside its budget](images/measurements.svg)

| what | measured | floor | result | budget | met | passes |
|---|---|---|---|---|---|---|
"""


def number(value):
    if value is None:
        return ""
    return f"{value:,.0f}" if abs(value) >= 100 or value == int(value) else f"{value:.3g}"


def amount(row, value):
    if value is None:
        return ""
    if row.counts == "times":
        return f"{value:.2f}"
    return number(value) + (f" {row.unit}" if row.unit else "")


def result_of(row, measured):
    return row.result(*measured[row.key])


def judge(measured):
    """Prints each result; 1 when one is above its gate."""
    failed = []
    for row in ROWS:
        if row.key not in measured:
            continue
        result = result_of(row, measured)
        text = f"{row.what}: {amount(row, result)}"
        if row.gate is None:
            print(f"bench: {text}")
        elif result <= row.gate:
            print(f"bench: {text}, up to {amount(row, row.gate)} passes")
        else:
            failed.append(f"bench: FAILED: {text}, more than {amount(row, row.gate)}")
    print("\n".join(failed) if failed else "bench: every gate passed")
    return 1 if failed else 0


def is_met(row, measured):
    return result_of(row, measured) <= row.budget


def machine():
    with open("/proc/cpuinfo", encoding="utf-8") as file:
        model = re.search(r"^model name\s*: (.*)", file.read(), re.M)
    with open("/etc/os-release", encoding="utf-8") as file:
        system = re.search(r'^PRETTY_NAME="(.*)"', file.read(), re.M)[1]
    memory = os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES") / 2**30
    return (f"{model[1] if model else os.uname().machine}, {os.cpu_count()} cores, "
            f"{memory:.0f} GiB, {system}, Linux {os.uname().release.split('-')[0]}")


def write(measured):
    lines = []
    for row in ROWS:
        value, floor = measured[row.key]
        met = "" if row.budget is None else "yes" if is_met(row, measured) else "**no**"
        unit = f" {row.unit}" if row.unit else ""
        lines.append(f"| {row.what} | {number(value)}{unit} | {number(floor)} | "
                     f"{amount(row, result_of(row, measured))} | {amount(row, row.budget)} | {met} "
                     f"| {amount(row, row.gate)} |\n")
    with open(DOCS + "/measurements.md", "w", encoding="utf-8") as file:
        file.write(HEAD.format(date=datetime.date.today().isoformat(), machine=machine()))
        file.writelines(lines)
    with open(DOCS + "/images/measurements.svg", "w", encoding="utf-8") as file:
        file.write(draw([row for row in ROWS if row.budget], measured))


def draw(rows, measured):
    """A bar for each row; one that ends at the line takes its whole budget."""
    left, scale, step = 460, 160, 20
    height = step * len(rows) + 50
    text = [f'<svg xmlns="http://www.w3.org/2000/svg" width="860" height="{height}" '
            'font-family="sans-serif" font-size="12">\n<!-- SPDX-FileCopyrightText: 2026 The '
            'bt-autoconnect authors -->\n<!-- SPDX-License-Identifier: Apache-2.0 -->\n'
            f'<rect width="860" height="{height}" fill="#ffffff"/>\n']
    for i, row in enumerate(rows):
        share = max(result_of(row, measured) / row.budget, 0)
        width = min(share, 2) * scale
        y = 30 + i * step
        colour = "#2e7d32" if is_met(row, measured) else "#c62828"
        what = html.escape(row.what.split(";")[0])
        text.append(f'<text x="{left - 8}" y="{y + 12}" text-anchor="end">{what}'
                    f'{" (instructions)" if row.unit == "instructions" else ""}</text>\n'
                    f'<rect x="{left}" y="{y}" width="{width:.1f}" height="15" '
                    f'fill="{colour}"/>\n<text x="{left + width + 6:.1f}" y="{y + 12}">'
                    f'{html.escape(amount(row, result_of(row, measured)))}</text>\n')
    x = left + scale
    text.append(f'<line x1="{x}" y1="24" x2="{x}" y2="{height - 10}" stroke="#000000"/>\n'
                f'<text x="{x}" y="18" text-anchor="middle">budget</text>\n</svg>\n')
    return "".join(text)
