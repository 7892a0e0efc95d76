// SPDX-License-Identifier: Apache-2.0
//
// The library's exception: an identifier and a detail text.
#include "spreadsheet/exception.h"

#include <utility>

namespace spreadsheet {

Exception::Exception(error_id id) : id_(id) {}
Exception::Exception(error_id id, std::string detail) : id_(id), detail_(std::move(detail)) {}
Exception::Exception(const Exception&) = default;
Exception& Exception::operator=(const Exception&) = default;
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
