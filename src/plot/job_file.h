// The job file: an XML property list that describes a print job.
//
// Which key fills which field of the record, and as what type, is a table. A value of the wrong type counts as absent; a
// string without memory makes the job unfit, for a job without its tool or terminator is another job.
#pragma once

#include <cstdint>

namespace plot {

/// True when the job in the record has tool strings that are to be sent.
bool jobHasTools();

} // namespace plot

extern "C" {

/// Reads the file that ORB_JobFileRef names into the record: presets first, then the values of the keys that are present.
/// Returns the last File Manager code. ORB_errorID: 22007, or 37001 for every failure (some of which return 0).
int32_t ORB_readJobFile();
}
