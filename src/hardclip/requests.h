// The texts that ask a plotter for its hard-clip limits. Over a serial line the emulation decides which; over USB the maker
// does first, for there the vendor is known. So the two differ in their texts and in the fields of the record that they
// read.
#pragma once

namespace hardclip {

/// Clears ORB_writeBuffer and puts the request for ORB_EmulationID and ORB_emulationVariant there. A variant that is
/// answered as another emulation is sets ORB_EmulationID to that.
void buildSerialRequest() noexcept;

/// What is asked after the first of two replies.
constexpr const char *kSecondSerialRequest = "U";
constexpr const char *kSecondUsbRequest = "UU";

/// The same for ORB_USBidVendor, ORB_PlotterEmulationID and ORB_emulationVariant.
void buildUsbRequest() noexcept;

} // namespace hardclip
