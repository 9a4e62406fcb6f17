// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "pairing.h"

#include <algorithm>
#include <cstdlib>
#include <vym/vym_bluetooth.h>

namespace vymctl {
namespace {

constexpr const char* kUsualPin = "0000";
constexpr size_t kLongestPin = 16;

bt_bdaddr_t address_of(const Event& request) {
    return to_address(request.value("address").get<std::string>()).value();
}

void send_reply(const Event& request, bool accept, std::string secret) {
    const bt_bdaddr_t address = address_of(request);
    const auto yes = static_cast<uint8_t>(accept ? 1 : 0);
    if (request.type->name == "adapter.pin-request") {
        vym_bluetooth_pin_reply(address, yes, static_cast<uint16_t>(secret.size()),
                                reinterpret_cast<uint8_t*>(secret.data()));
    } else if (request.type->name == "adapter.connection-request") {
        vym_bluetooth_connection_auth(address, request.value("profile").get<uint8_t>(), yes);
    } else {
        const Field& field = request.type->fields.at(request.type->find("variant").value());
        const Json variant = request.value("variant");
        const auto number = variant.is_string() ? read_value(field, variant.get<std::string>()).number
                                                : variant.get<int64_t>();
        const int passkey = secret.empty() ? request.value("passkey").get<int>()
                                           : static_cast<int>(std::strtol(secret.c_str(), nullptr, 10));
        vym_bluetooth_ssp_reply(address, static_cast<uint8_t>(number), yes, passkey);
    }
}

} // namespace

void check_pairing_policy(const std::string& policy) {
    const bool is_pin =
        policy.rfind("pin=", 0) == 0 && policy.size() > 4 && policy.size() - 4 <= kLongestPin;
    if (!is_pin && policy != "accept" && policy != "reject" && policy != "ask") {
        throw Usage("--pairing is accept, reject, ask or pin=0000 (1 to 16 characters), not \"" +
                    policy + '"');
    }
}

bool Pairing::is_request(const Event& event) {
    return event.type->name == "adapter.pin-request" || event.type->name == "adapter.pairing-request" ||
           event.type->name == "adapter.connection-request";
}

bool Pairing::answer_by_policy(const Event& request) const {
    if (policy_ == "ask" || policy_.empty()) {
        return false;
    }
    const bool wants_pin = request.type->name == "adapter.pin-request";
    const std::string pin =
        policy_ == "accept" ? kUsualPin : policy_.substr(std::min<size_t>(4, policy_.size()));
    send_reply(request, policy_ != "reject", wants_pin && policy_ != "reject" ? pin : "");
    return true;
}

std::string Pairing::question(const Event& request) {
    const std::string who = request.value("address").get<std::string>() +
                            (request.type->find("name") ? " " + dump(request.value("name")) : "");
    if (request.type->name == "adapter.pin-request") {
        return who + " wants to pair: PIN, or no?";
    }
    if (request.type->name == "adapter.connection-request") {
        return who + " wants to connect profile " + to_word(request.value("profile")) + ": yes or no?";
    }
    const Json variant = request.value("variant");
    if (variant == "enter") {
        return who + " wants to pair: the number that it shows, or no?";
    }
    std::string digits = to_word(request.value("passkey"));
    digits.insert(0, 6 - std::min<size_t>(6, digits.size()), '0');
    return who + " wants to pair" + (variant == "consent" ? "" : " and shows " + digits) +
           ": yes or no?";
}

void Pairing::answer(const Event& request, const std::string& reply) {
    if (reply == "no" || reply == "yes") {
        send_reply(request, reply == "yes",
                   request.type->name == "adapter.pin-request" && reply == "yes" ? kUsualPin : "");
    } else if (reply.empty() || reply.size() > kLongestPin) {
        throw Usage("the answer is yes, no, a PIN or the number that the device shows");
    } else {
        send_reply(request, true, reply);
    }
}

} // namespace vymctl
