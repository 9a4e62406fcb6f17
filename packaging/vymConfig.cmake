# SPDX-License-Identifier: MIT
# Copyright (c) 2026 The vym authors

include("${CMAKE_CURRENT_LIST_DIR}/vymTargets.cmake")
