// What a run stands on: the devices and files of a scenario, and the record that a host sends.
#pragma once

#include "support/scripted.h"
#include "sweep/scenarios.h"

#include <cstddef>
#include <vector>

namespace sweep {

struct Range {
    size_t offset, size;
};

// By the record's layout, in bytes.
constexpr Range kReserved[] = {{12, 8},  {62, 6},     {356, 20},     {384, 12},     {420, 4},    {480, 8},   {492, 8},
                               {504, 9}, {514, 2110}, {15440, 6620}, {22140, 1424}, {23644, 84}, {23856, 8}, {23942, 22}};
constexpr Range kReservedInEntry[] = {{4, 8}, {16, 9}, {26, 2110}}; // of each plotter
constexpr Range kOnlyTheHosts[] = {{4, 4}, {20, 4}, {36, 24}, {448, 4}, {22060, 80}, {23564, 80}};
constexpr size_t kStrings[] = {448, 476, 23808, 23812, 23816, 23824, 23828, 23832, 23836, 23840, 23844, 23848, 23852};
constexpr size_t kPortLists[] = {396, 424, 452}; // six strings each; a scan releases those that it replaces

CFStringRef stringAt(const ORB_ServiceRecord &record, size_t offset);

/// Where the strings of the port lists are.
std::vector<size_t> portStrings();

/// Puts the devices and the files of a scenario into the platform.
void furnish(scripted::Platform &platform, const Scenario &scenario);

/// The record that the host sends. Every byte that has no meaning holds a pattern, every string field a string of the
/// host's own.
ORB_ServiceRecord makeRecord(scripted::Platform &platform, const Scenario &scenario);

} // namespace sweep
