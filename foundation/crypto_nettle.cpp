// SPDX-License-Identifier: Apache-2.0
//
// Over Nettle, whose functions need neither set-up nor modules that a system may lack.
#include <cstdint>

#include <nettle/arcfour.h>
#include <nettle/md5.h>
#include <nettle/sha1.h>

#include "foundation/crypto.h"

namespace foundation::crypto {

namespace {

const std::uint8_t* octets(std::string_view bytes) {
    return reinterpret_cast<const std::uint8_t*>(bytes.data());
}

std::uint8_t* octets(char* bytes) {
    return reinterpret_cast<std::uint8_t*>(bytes);
}

} // namespace

struct Rc4::State {
    arcfour_ctx context;
};

std::array<char, 16> md5(std::string_view bytes) {
    std::array<char, 16> digest;
    md5_ctx context;
    md5_init(&context);
    md5_update(&context, bytes.size(), octets(bytes));
    md5_digest(&context, digest.size(), octets(digest.data()));
    return digest;
}

std::array<char, 20> sha1(std::string_view bytes) {
    std::array<char, 20> digest;
    sha1_ctx context;
    sha1_init(&context);
    sha1_update(&context, bytes.size(), octets(bytes));
    sha1_digest(&context, digest.size(), octets(digest.data()));
    return digest;
}

Rc4::Rc4() : state_(std::make_unique<State>()) {}
Rc4::~Rc4() = default;
Rc4::Rc4(Rc4&&) noexcept = default;
Rc4& Rc4::operator=(Rc4&&) noexcept = default;

void Rc4::set_key(std::string_view key) {
    arcfour_set_key(&state_->context, key.size(), octets(key));
}

void Rc4::apply(char* bytes, std::size_t count) {
    arcfour_crypt(&state_->context, count, octets(bytes), octets(bytes));
}

} // namespace foundation::crypto
