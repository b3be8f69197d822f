// Makes bytes from outside safe to show. Names come from targets and files and may hold anything: broken
// UTF-8, control characters, escape sequences. Nothing that steers a terminal or breaks a format gets out.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace exporters {

// For terminals and messages: what is not harmless UTF-8 text becomes \xNN byte by byte, a backslash \\.
std::string SafeText(std::string_view bytes);

// Whether all of it is harmless UTF-8 text, backslashes included.
bool IsHarmless(std::string_view bytes);

// SafeText in single quotes, for messages.
std::string Quoted(std::string_view bytes);

// A field of a CSV file (RFC 4180): SafeText, in double quotes where needed.
std::string CsvField(std::string_view bytes);

// A JSON string with its quotes. Control characters become \u00NN; so does a byte that is no UTF-8.
std::string JsonString(std::string_view bytes);

// "startLatency" as "start_latency": names of columns and of keys in TOML.
std::string SnakeCase(std::string_view camelCase);

// The columns that UTF-8 text takes on a terminal, one for each character.
std::size_t DisplayWidth(std::string_view utf8);

}  // namespace exporters
