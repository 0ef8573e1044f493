#pragma once

namespace simulator {

inline constexpr char kClientPath[] = "/com/veltrisonix/obex";
inline constexpr char kDeviceInterface[] = "com.veltrisonix.Device1";
inline constexpr char kClientInterface[] = "com.veltrisonix.obex.Client1";
inline constexpr char kSessionInterface[] = "com.veltrisonix.obex.Session1";
inline constexpr char kPhonebookInterface[] = "com.veltrisonix.obex.PhonebookAccess1";
inline constexpr char kTransferInterface[] = "com.veltrisonix.obex.Transfer1";

/// The UUID of the only service that sessions can connect to.
inline constexpr char kPhonebookServer[] = "0000112f-0000-1000-8000-00805f9b34fb";

}  // namespace simulator
