# SPDX-License-Identifier: MIT
# Copyright (c) 2026 The vym authors

include("${CMAKE_CURRENT_LIST_DIR}/vymTargets.cmake")

# Objects of C++ are in the archive, but nothing of its run-time library: a project in C alone can link it.
get_target_property(_vym_configurations vym::vym_static IMPORTED_CONFIGURATIONS)
foreach(_vym_configuration IN LISTS _vym_configurations)
    set_target_properties(vym::vym_static PROPERTIES
        IMPORTED_LINK_INTERFACE_LANGUAGES_${_vym_configuration} C)
endforeach()
unset(_vym_configuration)
unset(_vym_configurations)
