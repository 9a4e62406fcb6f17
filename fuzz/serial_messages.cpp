// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The serial reader: messages go to their connections, and the application reads what they hold.

#include "applications.h"
#include "hand_over.h"
#include "serial_connection.h"
#include "target.h"
#include "vym_bluetooth.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::require(fuzz::be_quiet(), "standard output can be closed");
    fuzz::Pair pair;
    vym_application_of("bluetooth")->start();
    vym_application_of("rfcomm")->start();
    fuzz::SerialConnection first(1);
    fuzz::SerialConnection second(2);
    fuzz::hand_over(IPC_ID_SPP, pair.theirs());
    pair.close_theirs();
    fuzz::send_all_and_end(pair.ours(), fuzz::text_of(data, size));
    fuzz::wait_for_end(pair.ours()); // the reader has closed its end
    first.read_to_end(1);
    second.read_to_end(1000);
    vym_application_of("rfcomm")->stop();
    vym_application_of("bluetooth")->stop();
    return 0;
}
