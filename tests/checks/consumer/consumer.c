/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/* The least an application does; valid as C99 and as C++. There is no server: starting must say so. */
#include <vym/vym_bluetooth.h>
#include <vym/vym_sdk.h>

int main(int argc, char** argv) {
    int result = 0;
    if (argc != 2) {
        return 2;
    }
    result = vym_sdk_init_ex(argv[1]);
    (void)vym_bluetooth_get_state();
    vym_sdk_done();
    return result == -1 ? 0 : 1;
}
