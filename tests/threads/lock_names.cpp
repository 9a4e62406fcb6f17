// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "threads/watching.h"
#include "vym_bluetooth_impl.h"

#include <algorithm>
#include <cstring>
#include <cxxabi.h>
#include <elf.h>
#include <fstream>
#include <link.h>
#include <memory>
#include <vector>

// Known to the program by its address and to its symbols by its name: where the program was loaded to.
extern "C" const char vym_threads_landmark = 0;

namespace {

struct Variable {
    uintptr_t begin;
    uintptr_t size;
    std::string name;
    std::string module;
};

template <class Record>
std::vector<Record> Records(const std::string& file, const ElfW(Shdr) & section) {
    std::vector<Record> records(section.sh_size / sizeof(Record));
    memcpy(records.data(), file.data() + section.sh_offset, records.size() * sizeof(Record));
    return records;
}

std::string Demangled(const char* name) {
    int status = 0;
    const std::unique_ptr<char, void (*)(void*)> text(
        abi::__cxa_demangle(name, nullptr, nullptr, &status), free);
    const std::string whole = status == 0 ? text.get() : name;
    const size_t colons = whole.rfind("::");
    return colons == std::string::npos ? whole : whole.substr(colons + 2);
}

// "vym_sdk" of "vym_sdk.cpp".
std::string Stem(const std::string& file) {
    return file.substr(0, file.rfind('.'));
}

std::vector<Variable> ReadVariables() {
    std::ifstream stream("/proc/self/exe", std::ios::binary | std::ios::ate);
    std::string file(static_cast<size_t>(std::max<std::streamoff>(stream.tellg(), 0)), '\0');
    stream.seekg(0).read(file.data(), static_cast<std::streamsize>(file.size()));
    ElfW(Ehdr) header{};
    memcpy(&header, file.data(), std::min(file.size(), sizeof header));
    std::vector<ElfW(Shdr)> sections(header.e_shnum);
    memcpy(sections.data(), file.data() + header.e_shoff, sections.size() * sizeof(ElfW(Shdr)));
    const auto table = std::find_if(sections.begin(), sections.end(),
                                    [](const ElfW(Shdr) & one) { return one.sh_type == SHT_SYMTAB; });
    std::vector<Variable> variables;
    if (table == sections.end()) {
        return variables;
    }
    const char* names = file.data() + sections[table->sh_link].sh_offset;
    std::string module;
    uintptr_t base = 0;
    for (const auto& symbol : Records<ElfW(Sym)>(file, *table)) {
        const char* name = names + symbol.st_name;
        const int type = symbol.st_info & 0xF;
        if (type == STT_FILE) {
            module = Stem(name); // local symbols follow the file they are of
        } else if (type == STT_OBJECT && symbol.st_size > 0) {
            variables.push_back({symbol.st_value, symbol.st_size, name, module});
            if (strcmp(name, "vym_threads_landmark") == 0) {
                base = reinterpret_cast<uintptr_t>(&vym_threads_landmark) - symbol.st_value;
            }
        }
    }
    for (Variable& one : variables) {
        one.begin += base;
    }
    return variables;
}

} // namespace

namespace threads {

std::string LockName(const void* lock) {
    static const std::vector<Variable> variables = ReadVariables();
    if (lock == &vym::s_adapter.event_lock) {
        return "`event_lock` (vym_bluetooth)";
    }
    if (lock == &vym::s_adapter.cache_lock) {
        return "`cache_lock` (vym_bluetooth)";
    }
    const auto at = reinterpret_cast<uintptr_t>(lock);
    const auto found = std::find_if(variables.begin(), variables.end(), [at](const Variable& variable) {
        return at >= variable.begin && at - variable.begin < variable.size;
    });
    if (found == variables.end()) {
        return "one of the socket's own";
    }
    // The serial data's structure has a second one behind the first.
    if (found->module == "vym_rfcomm_ipc" && at != found->begin) {
        return "`delivery` (vym_rfcomm_ipc)";
    }
    return "`" + Demangled(found->name.c_str()) + "` (" + found->module + ")";
}

} // namespace threads
