// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What crosses the library's wire, as D-Bus messages between two peers without a bus.
#ifndef VYM_BENCH_DBUS_H
#define VYM_BENCH_DBUS_H

namespace bench {

constexpr char kPath[] = "/gatt";
constexpr char kInterface[] = "bench.Gatt";
/// connection, address, service type, service instance, service, value instance, characteristic,
/// whether it is a notification, value
constexpr char kNotify[] = "Notify";
/// connection, service type, service instance, service, value instance, characteristic, type, auth,
/// value
constexpr char kWrite[] = "Write";
constexpr char kGetName[] = "GetName";
constexpr char kStartEvents[] = "Start";

} // namespace bench

#endif
