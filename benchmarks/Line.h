// What all contenders write: a line of 100 bytes with a number and a text in it.

#pragma once

#include <string>
#include <string_view>

namespace bench {

/// As bytes, line feed included.
constexpr std::string_view LINE =
    "2026-08-01 12:34:56.789 [12345] INFO  com.acme.Server - request 123456 from host-042.example.org ok\n";
static_assert(LINE.size() == 100);

/// The line as patterns.
constexpr const char* OUR_PATTERN = "%d{%Y-%m-%d %H:%M:%S.%Q} [%t] %-5p %c - %m%n";
constexpr const char* SPDLOG_PATTERN = "%Y-%m-%d %H:%M:%S.%e [%t] %-5l %n - %v";

constexpr const char* LOGGER = "com.acme.Server";
inline const std::string HOST = "host-042.example.org";

/// The number in the line of call `i`: always six digits.
inline int number(long i) { return 100000 + static_cast<int>(i % 900000); }

}  // namespace bench
