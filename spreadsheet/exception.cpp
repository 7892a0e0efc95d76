// SPDX-License-Identifier: Apache-2.0
//
// The library's exception: an identifier and a detail text.
#include "spreadsheet/exception.h"

#include <utility>

namespace spreadsheet {

using Base = foundation::core::except::Exception<foundation::core::except::IInternalException,
                                                 std::exception>;

Exception::Exception(error_id id) : id_(id) {}
Exception::Exception(error_id id, std::string detail) : id_(id), detail_(std::move(detail)) {}

// Boost's own copy would share what the exception carries and count the owners without a lock:
// copies in different threads must not have anything in common.
Exception::Exception(const Exception& other)
    : clone_base(), Base(), id_(other.id_), detail_(other.detail_) {
    boost::exception_detail::copy_boost_exception(this, &other);
}

Exception& Exception::operator=(const Exception& other) {
    id_ = other.id_;
    detail_ = other.detail_;
    boost::exception_detail::copy_boost_exception(this, &other);
    return *this;
}

Exception::~Exception() noexcept = default;

const char* Exception::what() const noexcept {
    return detail_.empty() ? error_id_message(id_) : detail_.c_str();
}

const boost::exception_detail::clone_base* Exception::clone() const {
    return new Exception(*this);
}

void Exception::rethrow() const {
    throw Exception(*this);
}

} // namespace spreadsheet
