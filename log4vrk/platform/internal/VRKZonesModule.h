// What the library and its module for time zones by name, tovlog4vrk-zones.so, say to each other.

#pragma once

#include <string_view>

class VRKTimeZone;

constexpr char VRK_ZONES_MODULE[] = "tovlog4vrk-zones.so";

/// The module's one function, by this name: it changes whenever anything here or VRKTimeZone's virtual functions do.
/// `name` is as ICU has it. The caller deletes the result, which is null when there is no such zone. Raises
/// std::bad_alloc. Thread safety: any thread.
constexpr char VRK_ZONES_FIND[] = "vrkZonesFind1";
using VRKZonesFind = VRKTimeZone* (*)(std::u16string_view name);
