// The texts that ask a plotter for its hard-clip limits. Over a serial line the emulation decides which; over USB the maker
// does first, for there the vendor is known. So the two differ in their texts and in the fields of the record that they
// read.
#pragma once

namespace hardclip {

/// Clears ORB_writeBuffer and puts the request for ORB_EmulationID and ORB_emulationVariant there. 17009 with variant 2
/// becomes 17010.
void buildSerialRequest() noexcept;

/// What 17009 is asked after its first reply.
constexpr const char *kSecondSerialRequest = "U";
constexpr const char *kSecondUsbRequest = "UU";

/// Clears ORB_writeBuffer and puts the request for ORB_USBidVendor, ORB_PlotterEmulationID and ORB_emulationVariant there.
/// For vendor 0x0B4D variant 2 can turn ORB_EmulationID into 17010.
void buildUsbRequest() noexcept;

} // namespace hardclip
