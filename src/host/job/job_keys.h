// The keys of a job file, spelled as the plug-in reads them, blank and colon included. Writer, check, JSON report and the
// options of "job write" all go by this one table, so that a key is one row.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

namespace host {

enum class JobKind { Text, Integer, Real };

struct JobKey {
    const char *key; ///< in the file
    JobKind kind;
    const char *name;             ///< in JSON
    const char *option = nullptr; ///< of "job write", for those that only it sets
    const char *help = nullptr;
};

inline constexpr size_t kToolCount = 8;

inline constexpr const char *kProjectKey = "Project name :";
inline constexpr const char *kPlotterKey = "Plotter name :";
inline constexpr const char *kTerminatorKey = "Plotfile terminator :";
inline constexpr const char *kUseToolsKey = "ORB_UseTools :";
inline constexpr const char *kEmulationKey = "Plotter emulation ID :";

inline constexpr JobKey kJobKeys[] = {
    {kProjectKey, JobKind::Text, "projectName"},
    {kPlotterKey, JobKind::Text, "plotterName"},
    {kTerminatorKey, JobKind::Text, "terminator"},
    {kUseToolsKey, JobKind::Integer, "useTools"},
    {"ORB_USB_PIPEOUT :", JobKind::Integer, "pipeOut", "--pipe-out", "USB pipe to the plotter"},
    {"ORB_USB_PIPEIN :", JobKind::Integer, "pipeIn", "--pipe-in", "USB pipe from the plotter"},
    {"Plotter group ID :", JobKind::Integer, "plotterGroupID", "--group-id", "Plotter group identifier"},
    {"Plotter Subgroup ID :", JobKind::Integer, "plotterSubgroupID", "--subgroup-id", "Plotter subgroup identifier"},
    {"Plotter ID :", JobKind::Integer, "plotterID", "--plotter-id", "Plotter identifier"},
    {kEmulationKey, JobKind::Integer, "emulation"},
    {"Copy of the tiles :", JobKind::Real, "tileCopies", "--tile-copies", "Copies of the tiles"},
    {"Axis of the tiles :", JobKind::Real, "tileAxis", "--tile-axis", "Axis of the tiles"},
    {"X Tile :", JobKind::Real, "xTile", "--x-tile", "Tiles in X"},
    {"Y Tile :", JobKind::Real, "yTile", "--y-tile", "Tiles in Y"},
    {"From Tile :", JobKind::Real, "fromTile", "--from-tile", "First tile"},
    {"To Tile :", JobKind::Real, "toTile", "--to-tile", "Last tile"},
    {"ORB_CFSTR_Tool1 :", JobKind::Text, "tool1"},
    {"ORB_CFSTR_Tool2 :", JobKind::Text, "tool2"},
    {"ORB_CFSTR_Tool3 :", JobKind::Text, "tool3"},
    {"ORB_CFSTR_Tool4 :", JobKind::Text, "tool4"},
    {"ORB_CFSTR_Tool5 :", JobKind::Text, "tool5"},
    {"ORB_CFSTR_Tool6 :", JobKind::Text, "tool6"},
    {"ORB_CFSTR_Tool7 :", JobKind::Text, "tool7"},
    {"ORB_CFSTR_Tool8 :", JobKind::Text, "tool8"},
};

using JobValue = std::variant<std::string, int64_t, double>;

/// nullptr for a key that the plug-in does not read.
inline const JobKey *findJobKey(std::string_view key) {
    for (const JobKey &row : kJobKeys) {
        if (row.key == key) return &row;
    }
    return nullptr;
}

inline bool isToolKey(std::string_view key) { return key.rfind("ORB_CFSTR_Tool", 0) == 0; }

} // namespace host
