// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "central.h"

#include "low_energy.h"

#include <algorithm>

namespace sim {
namespace {

constexpr uint8_t kNotifications = 1;
constexpr uint8_t kIndications = 2;

/// What a client's response has no room for: the header of a read response.
constexpr size_t kReadHeader = 1;

const std::string kGreeting = "hello";
/// The halves of a long write.
const std::string kFirstPiece = "hello, ";
const std::string kSecondPiece = "world";

} // namespace

void Central::note(const std::string& text) const {
    // Several may be here at once.
    hub_.log.note(hub_.world.find(address_)->name + " " + text);
}

// What to do with a service.

void Central::explore(const OwnService& own) {
    const ServerConnection* connection = surroundings_.connection(own.server_if);
    note("finds service " + uuid_text(own.service.id.uuid) + " at handle " +
         std::to_string(own.service.handle));
    const bool planned = std::any_of(steps_.begin(), steps_.end(), [&own](const Step& s) {
        return s.kind == Kind::Mtu && s.server_if == own.server_if;
    });
    if (connection->mtu == kLeastMtu && !planned) {
        plan(own, Kind::Mtu, own.service.handle);
    }
    for (const Characteristic& c : own.service.characteristics) {
        if ((c.properties & kPropertyRead) != 0 && may_read(c)) {
            plan(own, Kind::Read, c.handle);
        }
    }
    plan_writes(own);
    plan_subscriptions(own);
    go_on();
}

void Central::read(const OwnService& own, uint16_t handle) {
    plan(own, Kind::Read, handle);
    go_on();
}

void Central::write(const OwnService& own, uint16_t handle, std::string value) {
    plan(own, Kind::Write, handle, std::move(value));
    go_on();
}

void Central::plan_writes(const OwnService& own) {
    uint16_t first = 0;
    for (const Characteristic& c : own.service.characteristics) {
        if ((c.properties & (kPropertyWrite | kPropertyWriteCommand)) == 0 || !may_write(c)) {
            continue;
        }
        const bool request = (c.properties & kPropertyWrite) != 0;
        plan(own, request ? Kind::Write : Kind::WriteCommand, c.handle, kGreeting);
        if (first == 0 && request) {
            first = c.handle;
        }
    }
    if (first != 0) {
        plan(own, Kind::Prepare, first, kFirstPiece);
        plan(own, Kind::Prepare, first, kSecondPiece, static_cast<uint16_t>(kFirstPiece.size()));
        plan(own, Kind::Execute, first);
    }
}

void Central::plan_subscriptions(const OwnService& own) {
    for (Characteristic c : own.service.characteristics) {
        const Descriptor* configuration = c.configuration();
        if (configuration != nullptr && may_write(*configuration)) {
            const bool only_indications =
                (c.properties & (kPropertyNotify | kPropertyIndicate)) == kPropertyIndicate;
            plan(own, Kind::Subscribe, configuration->handle,
                 le16(only_indications ? kIndications : kNotifications));
            steps_.back().characteristic = c.handle;
        }
    }
}

void Central::plan(const OwnService& own, Kind kind, uint16_t handle, std::string value,
                   uint16_t offset) {
    steps_.push_back({kind, own.server_if, handle, offset, std::move(value), 0});
}

bool Central::is_encrypted() const {
    return hub_.world.is_bonded(address_);
}

bool Central::may_read(const Attribute& attribute) const {
    const GattStatus status = attribute.check_read(is_encrypted());
    if (status != kGattSuccess) {
        note("may not read handle " + std::to_string(attribute.handle) + ": status " +
             std::to_string(status));
    }
    return status == kGattSuccess;
}

bool Central::may_write(const Attribute& attribute) const {
    const GattStatus status = attribute.check_write(is_encrypted());
    if (status != kGattSuccess) {
        note("may not write handle " + std::to_string(attribute.handle) + ": status " +
             std::to_string(status));
    }
    return status == kGattSuccess;
}

// Requests, one at a time.

void Central::go_on() {
    if (!pending_ && !waiting_ && !steps_.empty()) {
        waiting_ = true;
        timer_.start(hub_.pace.att_step, [this] { next(); });
    }
}

void Central::next() {
    waiting_ = false;
    if (steps_.empty()) {
        return;
    }
    Step step = std::move(steps_.front());
    steps_.pop_front();
    ServerConnection& connection = *surroundings_.connection(step.server_if);
    if (carry_out(step, connection)) {
        await_response(step);
    } else {
        go_on();
    }
}

Event Central::request(const char* tag, const ServerConnection& connection) const {
    Event event(tag);
    event.address(connection.address).word(connection.id).word(transaction_);
    return event;
}

bool Central::carry_out(Step& step, ServerConnection& connection) {
    if (step.kind == Kind::Mtu) {
        connection.mtu = kMostMtu;
        hub_.out.send(Event("JP").word(connection.id).word(connection.mtu));
        return false;
    }
    if (step.kind == Kind::Prepare && prepare_failed_) {
        return false;
    }
    ++transaction_;
    if (step.kind == Kind::Execute) {
        hub_.out.send(request("JM", connection).byte(prepare_failed_ ? 0 : 1));
        prepare_failed_ = false;
        return true;
    }
    if (step.kind == Kind::Read) {
        hub_.out.send(request("JK", connection)
                          .word(step.handle)
                          .word(step.offset)
                          .byte(step.offset > 0 ? 1 : 0));
        return true;
    }
    const bool needs_response = step.kind != Kind::WriteCommand;
    hub_.out.send(request("JL", connection)
                      .word(step.handle)
                      .word(step.offset)
                      .byte(needs_response ? 1 : 0)
                      .byte(step.kind == Kind::Prepare ? 1 : 0)
                      .block(step.value));
    return needs_response;
}

void Central::await_response(const Step& step) {
    pending_ = step;
    timer_.start(hub_.pace.att_timeout, [this] { timed_out(); });
}

void Central::timed_out() {
    note("had no response to transaction " + std::to_string(transaction_) + " about handle " +
         std::to_string(pending_->handle) + " and gives up");
    // Over a connection whose transaction is not done, nothing more may be asked.
    surroundings_.give_up();
}

bool Central::respond(const Response& response) {
    if (!pending_ || response.trans_id != transaction_) {
        return false;
    }
    const ServerConnection& connection = *surroundings_.connection(pending_->server_if);
    if (connection.id != response.conn_id) {
        return false;
    }
    timer_.stop();
    const Step step = *pending_;
    pending_.reset();
    answered(step, response, connection);
    go_on();
    return true;
}

void Central::answered(const Step& step, const Response& response, const ServerConnection& connection) {
    const std::string about = "handle " + std::to_string(step.handle);
    // A long read may find its end only by asking for more than there is.
    const bool past_end =
        step.kind == Kind::Read && step.offset > 0 && response.status == kInvalidOffset;
    if (response.status != kGattSuccess && !past_end) {
        note("is refused at " + about + ": status " + std::to_string(response.status));
        prepare_failed_ = prepare_failed_ || step.kind == Kind::Prepare;
        read_so_far_.clear();
        return;
    }
    switch (step.kind) {
    case Kind::Read:
        value_read(step, response, connection);
        break;
    case Kind::Prepare:
        note("has prepared to write " + about);
        if (response.value != step.value) {
            note("did not get back what it wrote");
            prepare_failed_ = true;
        }
        break;
    case Kind::Execute:
        note("has executed its long write to " + about);
        break;
    case Kind::Subscribe:
        subscriptions_[step.characteristic] = static_cast<uint8_t>(step.value[0]);
        note("has subscribed to handle " + std::to_string(step.characteristic));
        break;
    default:
        note("has written " + about);
    }
}

void Central::value_read(const Step& step, const Response& response,
                         const ServerConnection& connection) {
    const size_t room = connection.mtu - kReadHeader;
    if (response.status == kGattSuccess) {
        read_so_far_ += response.value.substr(0, room);
    }
    // A response that is full may have a continuation.
    if (response.status == kGattSuccess && response.value.size() >= room &&
        read_so_far_.size() < kLongestValue) {
        Step more = step;
        more.offset = static_cast<uint16_t>(read_so_far_.size());
        steps_.push_front(more);
        return;
    }
    note("has read handle " + std::to_string(step.handle) + ": " + hex_text(read_so_far_));
    read_so_far_.clear();
}

// What comes by itself.

bool Central::is_subscribed(uint16_t characteristic, bool indication) const {
    const auto it = subscriptions_.find(characteristic);
    return it != subscriptions_.end() &&
           (it->second & (indication ? kIndications : kNotifications)) != 0;
}

void Central::receive(uint16_t characteristic, const std::string& value, bool indication) {
    note(std::string("receives ") + (indication ? "an indication" : "a notification") + " of handle " +
         std::to_string(characteristic) + ": " + hex_text(value));
}

template <typename Condition>
void Central::drop(Condition condition) {
    steps_.erase(std::remove_if(steps_.begin(), steps_.end(), condition), steps_.end());
    if (pending_ && condition(*pending_)) {
        pending_.reset();
        timer_.stop();
        read_so_far_.clear();
        prepare_failed_ = false;
    }
    go_on();
}

void Central::service_stopped(const OwnService& own) {
    const unsigned first = own.service.handle;
    const unsigned end = first + own.room;
    for (const Characteristic& characteristic : own.service.characteristics) {
        subscriptions_.erase(characteristic.handle);
    }
    // The MTU is the connection's, not the service's.
    drop([first, end](const Step& step) {
        return step.kind != Kind::Mtu && step.handle >= first && step.handle < end;
    });
}

void Central::server_gone(uint8_t server_if) {
    for (OwnService& own : table_.services()) {
        if (own.server_if == server_if) {
            service_stopped(own);
        }
    }
    drop([server_if](const Step& step) { return step.server_if == server_if; });
}

void Central::stop() {
    timer_.stop();
    steps_.clear();
    pending_.reset();
    subscriptions_.clear();
    read_so_far_.clear();
    prepare_failed_ = waiting_ = false;
}

} // namespace sim
