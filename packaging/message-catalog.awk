# SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
# SPDX-License-Identifier: Apache-2.0
#
# Prints the catalog from which `journalctl -x` explains the lines that matter: their ids and fields
# are those of LogFields.h, the text is what the manual's tables say of the line. Fails when a line
# has no row there, and when the manual's table for tools is not as LogFields.h.
# Usage: awk -f packaging/message-catalog.awk platform/linux/base/LogFields.h docs/operating.md

function fail(text) {
  print "message-catalog: " text >"/dev/stderr"
  failed = 1
}

# The rows of kLogEvents: event[ROW, COLUMN], where the fields are one column, "A B".
function take_events(table,    i, c, depth, column, value) {
  for (i = 1; i <= length(table); ++i) {
    c = substr(table, i, 1)
    if (c == "{") {
      ++depth
      ++column
      if (depth == 1) {
        column = 0
        ++events
      }
    } else if (c == "}") {
      --depth
    } else if (c == "\"") {
      value = substr(table, i + 1, index(substr(table, i + 1), "\"") - 1)
      i += length(value) + 1
      sub(/ +$/, "", value)
      if (depth == 2) {
        event[events, column] = event[events, column] (event[events, column] == "" ? "" : " ") value
      } else {
        event[events, ++column] = value
      }
    }
  }
}

# The row of the manual's table for tools.
function tool_row(e,    line, fields, i, names, count) {
  line = "`" event[e, 3] "`"
  line = line (event[e, 6] == "" ? "" : " from `" event[e, 6] "`")
  line = line (event[e, 7] == "" ? "" : " with " event[e, 7])
  count = split(event[e, 4] (event[e, 5] == "" ? "" : " REASON"), names, " ")
  for (i = 1; i <= count; ++i) {
    fields = fields (i == 1 ? "" : ", ") "`" names[i] "`"
  }
  fields = fields (event[e, 5] == "" ? "" : ": " event[e, 5])
  return "| `" event[e, 2] "` | " line " | `" event[e, 1] "` | " fields (fields == "" ? "" : " ") "|"
}

# Text as a terminal shows it: no marks, and a link is the heading that it leads to.
function plain(text,    name, target) {
  while (match(text, /\[[^]]*\]\([^)]*\)/)) {
    name = substr(text, RSTART + 1, RLENGTH - 1)
    target = substr(name, index(name, "](") + 3)
    sub(/\)$/, "", target)
    name = substr(name, 1, index(name, "](") - 1)
    if (target in heading) {
      name = (name == "above" || name == "below" ? "" : name ", ") "see \"" heading[target] "\""
      name = name " in the operating manual"
    }
    text = substr(text, 1, RSTART - 1) name substr(text, RSTART + RLENGTH)
  }
  gsub(/`/, "\"", text)
  return text
}

function wrapped(text, first, others,    words, count, i, line, result) {
  count = split(text, words, " ")
  line = first
  for (i = 1; i <= count; ++i) {
    if (length(line) + length(words[i]) > 76 && line != first && line != others) {
      sub(/ +$/, "", line)
      result = result line "\n"
      line = others
    }
    line = line words[i] " "
  }
  sub(/ +$/, "", line)
  return result line "\n"
}

# What the manual's rows say of an event, and then what it says of each reason.
function explanation(e,    r, beginning, own, percent, text, list) {
  own = "`" event[e, 3] "`"
  percent = index(own, "%")
  beginning = percent > 6 ? substr(own, 1, percent - 1) : own
  for (r = 1; r <= rows; ++r) {
    if (kind_of_row[r] == "log") {
      if (tells_of(row_line[r], own, event[e, 6])) {
        text = text wrapped(sentence(plain(row_text[r])), "", "")
      }
    } else if (kind_of_row[r] == "refusal" ? index(row_line[r], beginning) == 1 : \
               event[e, 2] == "not-connected") {
      list = list wrapped(plain(row_line[r] ": " row_text[r]), "- ", "  ")
    }
  }
  if (text == "") {
    fail("the manual says nothing of the line " own)
  }
  return text (list == "" ? "" : "\n") list
}

# Whether a row is of the line `own` of a function, which it may leave open.
function tells_of(row, own, name) {
  if (index(row, own " from `")) {
    return index(row, own " from `" name "`")
  }
  return index(row, own)
}

function sentence(text) {
  return toupper(substr(text, 1, 1)) substr(text, 2) "."
}

# Of a table, by the head of its first two columns.
function kind_of(first, second) {
  if (first == "" && second == "line") {
    return "log"
  }
  if (first == "line at the wake-up") {
    return "refusal"
  }
  return first == "`BT_EVENT`" ? "tools" : first == "reason" ? "reason" : "other"
}

FNR == 1 {
  ++file
}

file == 1 && /kLogEvents\[\] = {/ {
  in_table = 1
  next
}
file == 1 && /^};/ {
  in_table = 0
}
file == 1 && in_table {
  table = table $0
}

file == 2 && /^#+ / {
  title = $0
  sub(/^#+ /, "", title)
  slug = tolower(title)
  gsub(/[^a-z0-9 -]/, "", slug)
  gsub(/ /, "-", slug)
  heading[slug] = title
}
file == 2 && !/^\|/ {
  kind = ""
}
file == 2 && /^\|[^-]/ {
  manual[$0] = 1
  split($0, cell, / *\| */)
  if (kind == "") {
    kind = kind_of(cell[2], cell[3])
  } else if (kind == "tools") {
    ++tool_rows
  } else if (kind != "other") {
    ++rows
    kind_of_row[rows] = kind
    row_line[rows] = kind == "log" ? cell[3] : cell[2]
    row_text[rows] = kind == "refusal" ? cell[3] "; " cell[4] : cell[4]
    if (kind == "reason" && cell[3] != "none") {
      row_line[rows] = row_line[rows] " (" cell[3] ")"
    }
  }
}

END {
  take_events(table)
  for (e = 1; e <= events; ++e) {
    text = explanation(e)
    if (!(tool_row(e) in manual)) {
      fail("the manual's table for tools lacks\n" tool_row(e))
    }
    subject = "bt-autoconnect: " event[e, 2]
    if (event[e, 4] ~ /BT_ADDRESS/) {
      subject = subject " @BT_ADDRESS@"
    }
    if (event[e, 4] ~ /REASON/ || event[e, 5] != "") {
      subject = subject ": @REASON@"
    }
    print "-- " event[e, 1] "\nSubject: " subject
    print "Defined-By: bt-autoconnect\nDocumentation: man:bt-autoconnect(8)\n"
    print text
  }
  if (events == 0 || tool_rows != events) {
    fail(events " lines that matter, " tool_rows " rows in the manual's table for tools")
  }
  exit failed
}
