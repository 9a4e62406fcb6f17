// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// vCards 2.1 and 3.0 as phones write them: contacts and past calls from .vcf files.
#ifndef VYM_SIM_VCARD_H
#define VYM_SIM_VCARD_H

#include "phone.h"

#include <string>
#include <vector>

namespace sim {

// `file` is what errors name. All throw FileError; what a phone may add and the simulator has no use
// for is passed over.

std::vector<Contact> contacts_from_vcards(const std::string& file, const std::string& text);
/// Each card says with X-IRMC-CALL-DATETIME which kind of call it was, and when.
std::vector<PastCall> calls_from_vcards(const std::string& file, const std::string& text);

std::vector<Contact> load_contacts(const std::string& path);
std::vector<PastCall> load_calls(const std::string& path);

} // namespace sim

#endif
