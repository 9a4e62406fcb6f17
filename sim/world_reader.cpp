// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "scan_filters.h"
#include "vcard.h"
#include "world_file.h"
#include "world_values.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <unistd.h>

namespace sim {
namespace {

using Kind = DocumentValue::Kind;

constexpr size_t kLongestFile = 16U << 20U;
constexpr const char* kBuiltIn = "built-in";

/// The device's 16-bit services are what advertisements and answers to inquiries list.
void derive_services(Device& device) {
    device.services.clear();
    for (const Octets16& uuid : device.uuids) {
        const auto short_form = static_cast<uint16_t>(uuid[2] << 8 | uuid[3]);
        if (uuid == uuid_from_16bit(short_form)) {
            device.services.push_back(short_form);
        }
    }
}

// What only shows when all keys of an object are read.

template <typename T>
void check(const Place&, T&) {}

void check(const Place& place, Swing& s) {
    const int64_t most = (int64_t{1} << (8 * s.width)) - 1;
    if (s.low > s.high || s.high > most) {
        place.fail("the number swings from " + std::to_string(s.low) + " to " + std::to_string(s.high) +
                   "; expected \"low\" not above \"high\", and \"high\" not above " +
                   std::to_string(most));
    }
    if (2 * std::abs(int64_t{s.step}) > int64_t{s.high} - s.low) {
        place.fail("a step of " + std::to_string(s.step) +
                   " is too large; expected at most half of "
                   "what lies between \"low\" and \"high\"");
    }
}

void check(const Place& place, Attribute& a) {
    if (a.shortest > a.longest) {
        place.fail("\"shortest\" is " + std::to_string(a.shortest) + " and \"longest\" is " +
                   std::to_string(a.longest) + "; expected it the other way round");
    }
}

void check(const Place& place, Descriptor& d) {
    check(place, static_cast<Attribute&>(d));
}

void check(const Place& place, Characteristic& c) {
    check(place, static_cast<Attribute&>(c));
    if (!c.swing) {
        return;
    }
    if ((c.properties & (kPropertyWrite | kPropertyWriteCommand)) != 0) {
        place.fail("a value that can be written does not swing; expected one of the two");
    }
    if (c.swing->offset + c.swing->width > c.value.size()) {
        place.fail("the number that swings ends at byte " +
                   std::to_string(c.swing->offset + c.swing->width) +
                   " of the value; expected at most " + std::to_string(c.value.size()));
    }
    int64_t number = 0;
    for (size_t i = c.swing->width; i > 0; --i) {
        number = number << 8 | static_cast<uint8_t>(c.value[c.swing->offset + i - 1]);
    }
    if (number < c.swing->low || number > c.swing->high) {
        place.fail("the number that swings begins with " + std::to_string(number) +
                   "; expected one between \"low\" and \"high\"");
    }
}

/// Included services are named by their UUID; of what type they are follows.
void resolve_included(const Place& place, std::vector<Service>& services) {
    for (size_t i = 0; i < services.size(); ++i) {
        for (ServiceId& id : services[i].included) {
            const auto it = std::find_if(services.begin(), services.end(),
                                         [&id](const Service& s) { return s.id.uuid == id.uuid; });
            if (it == services.end() || it->id == services[i].id) {
                place.fail("service " + std::to_string(i) + " includes " + uuid_text(id.uuid) +
                           "; expected the UUID of another service of this peripheral");
            }
            id = it->id;
        }
    }
}

void check(const Place& place, Peripheral& p) {
    size_t handles = 0;
    for (const Service& service : p.attributes.services()) {
        handles += 1 + service.included.size();
        for (const Characteristic& c : service.characteristics) {
            handles += 2 + c.descriptors.size();
        }
    }
    constexpr size_t kMostHandles = 0xFFFF;
    if (handles > kMostHandles) {
        place.fail(std::to_string(handles) + " attributes are too many; expected at most " +
                   std::to_string(kMostHandles));
    }
    resolve_included(place, p.attributes.services());
}

void check(const Place& place, Device& d) {
    derive_services(d);
    if (d.pairing == Pairing::Pin && d.pin.empty()) {
        place.fail("there is no PIN to pair with; expected \"pin\"");
    }
    if (d.central && d.type == kClassic) {
        place.fail("a classic device is no central; expected the type \"low energy\" or \"dual\"");
    }
    if (d.peripheral.attributes.empty()) {
        return;
    }
    if (d.type == kClassic) {
        place.fail("a classic device is no peripheral; expected the type \"low energy\" or \"dual\"");
    }
    const std::pair<const char*, size_t> parts[] = {
        {"its services", advertisement_of(d).size()},
        {"its name and the manufacturer's data", scan_response_of(d).size()}};
    for (const auto& [what, size] : parts) {
        if (size > kLongestAdvertisement) {
            place.fail(std::string("with ") + what + " an advertisement has " + std::to_string(size) +
                       " bytes; expected at most " + std::to_string(kLongestAdvertisement));
        }
    }
}

// Objects.

class ObjectReader;

template <typename T>
void read(const Place& place, T& object);

template <typename T>
void read(const Place& place, std::vector<T>& objects) {
    objects.clear();
    const size_t count = place.list().items.size();
    for (size_t i = 0; i < count; ++i) {
        T object{};
        read(place.item(i), object);
        objects.push_back(std::move(object));
    }
}

template <typename T>
void read(const Place& place, std::optional<T>& object) {
    object.reset();
    if (place.value.kind != Kind::Null) {
        T fresh{};
        read(place, fresh);
        object = std::move(fresh);
    }
}

class ObjectReader {
public:
    static constexpr bool kReads = true;

    explicit ObjectReader(const Place& place) : place_(place) {
        if (place.value.kind != Kind::Object) {
            place.refuse("object", "one in braces");
        }
    }

    template <typename T>
    void operator()(const char* key, T&& value) {
        if (const DocumentMember* member = find(key)) {
            read(place_.member(*member), std::forward<T>(value));
        }
    }

    template <typename T>
    void need(const char* key, T&& value) {
        if (place_.value.find(key) == nullptr) {
            missing_ = missing_ == nullptr ? key : missing_;
        }
        (*this)(key, std::forward<T>(value));
    }

    void cards(const char* key, std::vector<Contact>& contacts) {
        load_cards(key, contacts, load_contacts, [](const Phone& phone, const std::string& which) {
            return which == "contacts" ? phone.contacts : phone.sim_contacts;
        });
    }

    void cards(const char* key, std::vector<PastCall>& calls) {
        load_cards(key, calls, load_calls,
                   [](const Phone& phone, const std::string&) { return phone.calls; });
    }

    /// The key is known here; what it has is read by other means.
    const DocumentMember* find(const char* key) {
        known_.emplace_back(key);
        const std::vector<DocumentMember>& all = place_.value.members;
        const auto it = std::find_if(all.begin(), all.end(),
                                     [key](const DocumentMember& m) { return m.key == key; });
        return it == all.end() ? nullptr : &*it;
    }

    /// Refuses keys that nobody asked for, and the lack of one that is needed.
    void finish() const {
        for (const DocumentMember& member : place_.value.members) {
            if (std::find(known_.begin(), known_.end(), member.key) == known_.end()) {
                throw FileError(place_.file, member.line,
                                place_.member(member).path +
                                    ": there is no such key; expected one of " + known());
            }
        }
        if (missing_ != nullptr) {
            place_.fail("there is no \"" + std::string(missing_) + "\"; expected one in this object");
        }
    }

private:
    template <typename T, typename Load, typename BuiltIn>
    void load_cards(const char* key, std::vector<T>& all, Load load, BuiltIn built_in) {
        const DocumentMember* member = find(key);
        if (member == nullptr) {
            return;
        }
        const Place place = place_.member(*member);
        if (place.value.kind == Kind::Null) {
            all.clear();
            return;
        }
        const std::string& name = place.text();
        if (name == kBuiltIn) {
            all = built_in(built_in_phone(), key);
            return;
        }
        const size_t slash = place.file.rfind('/');
        const bool is_beside = name.empty() || name[0] != '/';
        const std::string dir =
            is_beside && slash != std::string::npos ? place.file.substr(0, slash + 1) : std::string();
        if (name.empty() || access((dir + name).c_str(), R_OK) != 0) {
            const int error = name.empty() ? ENOENT : errno;
            place.fail(in_quotes(name) + " cannot be read (" + std::generic_category().message(error) +
                       "); expected a .vcf file, or \"" + kBuiltIn + '"');
        }
        all = load(dir + name);
    }

    std::string known() const {
        std::string all;
        for (const std::string& key : known_) {
            all += (all.empty() ? "" : ", ") + key;
        }
        return all;
    }

    const Place& place_;
    std::vector<std::string> known_;
    const char* missing_ = nullptr;
};

template <typename T>
void read(const Place& place, T& object) {
    ObjectReader reader(place);
    fields(reader, object);
    reader.finish();
    check(place, object);
}

// The world.

class WorldReader {
public:
    WorldReader(const std::string& file, const DocumentValue& document)
        : place_{file, document, ""}, reader_(place_) {}

    World read_all() {
        if (const DocumentMember* base = reader_.find("based_on")) {
            const Place place = place_.member(*base);
            if (place.text() != kBuiltIn) {
                place.refuse("world", std::string("\"") + kBuiltIn + '"');
            }
            world_ = built_in_world();
        }
        read_without();
        reader_("adapter", world_.adapter);
        if (const DocumentMember* devices = reader_.find("devices")) {
            read_devices(place_.member(*devices));
        }
        if (const DocumentMember* bonded = reader_.find("bonded")) {
            read_bonded(place_.member(*bonded));
        }
        reader_("phone", world_.phone);
        reader_("hall", Ranged<uint32_t>{world_.hall, 0, kLargestHall});
        reader_.finish();
        return std::move(world_);
    }

private:
    void read_without() {
        const DocumentMember* member = reader_.find("without");
        if (member == nullptr) {
            return;
        }
        const Place list = place_.member(*member);
        const size_t count = list.list().items.size();
        for (size_t i = 0; i < count; ++i) {
            const Address address = address_of_device(list.item(i));
            world_.forget_bond(address);
            world_.devices.erase(world_.devices.begin() +
                                 (world_.find(address) - world_.devices.data()));
        }
    }

    Address address_of_device(const Place& place) {
        Address address;
        read(place, address);
        if (world_.find(address) == nullptr) {
            place.refuse("device of this world", "the address of one");
        }
        return address;
    }

    void read_devices(const Place& list) {
        const size_t count = list.list().items.size();
        std::vector<Address> read_here;
        for (size_t i = 0; i < count; ++i) {
            const Place place = list.item(i);
            // A device that is there already is changed.
            Device device;
            if (const DocumentValue* address = place.value.find("address")) {
                read({place.file, *address, place.path + ".address"}, device.address);
                if (std::find(read_here.begin(), read_here.end(), device.address) != read_here.end()) {
                    place.fail("another device has the address " + in_quotes(address->text) +
                               "; expected one of its own");
                }
            }
            Device* there = world_.find(device.address);
            if (there != nullptr) {
                device = *there;
            }
            read(place, device);
            read_here.push_back(device.address);
            if (there != nullptr) {
                *there = std::move(device);
            } else {
                world_.devices.push_back(std::move(device));
            }
            check_centrals(place);
        }
    }

    void check_centrals(const Place& place) {
        const auto centrals = std::count_if(world_.devices.begin(), world_.devices.end(),
                                            [](const Device& d) { return d.central; });
        if (static_cast<size_t>(centrals) > kMostCentrals) {
            place.fail("one central too many; expected at most " + std::to_string(kMostCentrals));
        }
    }

    void read_bonded(const Place& list) {
        world_.bonded.clear();
        const size_t count = list.list().items.size();
        for (size_t i = 0; i < count; ++i) {
            const Place place = list.item(i);
            const Address address = address_of_device(place);
            if (world_.is_bonded(address)) {
                place.fail(place.value.description() + " is here twice; expected it once");
            }
            if (i == world_.adapter.max_bonded) {
                place.fail("one bonded device too many; expected at most " + std::to_string(i) +
                           ", as the adapter's \"max_bonded\" says");
            }
            world_.bonded.push_back(address);
        }
    }

    Place place_;
    ObjectReader reader_;
    World world_ = empty_world();
};

} // namespace

World world_from_text(const std::string& path, const std::string& text) {
    const DocumentValue document = parse_document(path, text);
    return WorldReader(path, document).read_all();
}

World load_world(const std::string& path) {
    return world_from_text(path, read_text_file(path, kLongestFile));
}

} // namespace sim
