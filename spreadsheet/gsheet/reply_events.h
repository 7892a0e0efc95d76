// SPDX-License-Identifier: Apache-2.0
//
// Reading a large reply without a tree: events of the JSON parser, brought into a smaller set for
// the readers of the back-end. Only sources include this header: it brings Boost.JSON's parser.
#pragma once

#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "foundation/boost_json_parser.h"
#include "foundation/json.h"

namespace gsheet {

/// Base of a reader; the root of the text has to be an object. `Reader` has
///
///     void begin(bool is_array);   // of an array or object, the root included
///     void end();                  // of the same
///     void key(std::string_view name);
///     void text_part(std::string_view part, bool is_last);
///     void number(double value);
///     void boolean(bool value);
///     void null();
///     bool is_overfull() const;    // asked after every end(): true ends the reading with an error
template <class Reader>
class ReplyEvents {
  public:
    using Failure = boost::json::error_code;

    static constexpr std::size_t max_array_size = static_cast<std::size_t>(-1);
    static constexpr std::size_t max_object_size = static_cast<std::size_t>(-1);
    static constexpr std::size_t max_string_size = static_cast<std::size_t>(-1);
    static constexpr std::size_t max_key_size = static_cast<std::size_t>(-1);

    bool on_document_begin(Failure&) { return true; }
    bool on_document_end(Failure&) { return true; }
    bool on_object_begin(Failure&) {
        ++depth_;
        reader().begin(false);
        return true;
    }
    bool on_object_end(std::size_t, Failure& failure) { return leave(failure); }
    bool on_array_begin(Failure& failure) {
        if (!is_inside(failure)) return false;
        ++depth_;
        reader().begin(true);
        return true;
    }
    bool on_array_end(std::size_t, Failure& failure) { return leave(failure); }

    bool on_key_part(std::string_view part, std::size_t, Failure&) {
        key_.append(part);
        return true;
    }
    bool on_key(std::string_view part, std::size_t, Failure&) {
        if (key_.empty()) {
            reader().key(part);
            return true;
        }
        key_.append(part);
        reader().key(key_);
        key_.clear();
        return true;
    }
    bool on_string_part(std::string_view part, std::size_t, Failure& failure) {
        if (!is_inside(failure)) return false;
        reader().text_part(part, false);
        return true;
    }
    bool on_string(std::string_view part, std::size_t, Failure& failure) {
        if (!is_inside(failure)) return false;
        reader().text_part(part, true);
        return true;
    }
    bool on_number_part(std::string_view, Failure&) { return true; }
    bool on_int64(std::int64_t value, std::string_view, Failure& failure) {
        return on_number(static_cast<double>(value), failure);
    }
    bool on_uint64(std::uint64_t value, std::string_view, Failure& failure) {
        return on_number(static_cast<double>(value), failure);
    }
    bool on_double(double value, std::string_view text, Failure& failure) {
        // The parser's own conversion can be one unit off in the last place.
        double exact = 0.0;
        const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), exact);
        const bool is_exact = problem == std::errc() && end == text.data() + text.size();
        return on_number(is_exact ? exact : value, failure);
    }
    bool on_bool(bool value, Failure& failure) {
        if (!is_inside(failure)) return false;
        reader().boolean(value);
        return true;
    }
    bool on_null(Failure& failure) {
        if (!is_inside(failure)) return false;
        reader().null();
        return true;
    }
    bool on_comment_part(std::string_view, Failure&) { return true; }
    bool on_comment(std::string_view, Failure&) { return true; }

  private:
    Reader& reader() { return static_cast<Reader&>(*this); }
    bool is_inside(Failure& failure) const {
        if (depth_ == 0) failure = boost::json::error::not_object;
        return depth_ != 0;
    }
    bool on_number(double value, Failure& failure) {
        if (!is_inside(failure)) return false;
        reader().number(value);
        return true;
    }
    bool leave(Failure& failure) {
        --depth_;
        reader().end();
        if (!reader().is_overfull()) return true;
        failure = boost::json::error::array_too_large;
        return false;
    }

    std::size_t depth_ = 0;
    std::string key_; ///< the parts of a key that came so far
};

/// Reads a whole text. Throws `foundation::json::ParseError` when it is not one JSON object.
template <class Reader>
Reader read_reply(std::string_view text, Reader reader) {
    constexpr std::size_t kMaxDepth = 512;
    boost::json::parse_options options;
    options.max_depth = kMaxDepth;
    boost::json::basic_parser<Reader> parser(options, std::move(reader));
    boost::json::error_code failure;
    const std::size_t taken = parser.write_some(false, text.data(), text.size(), failure);
    if (failure) throw foundation::json::ParseError(failure.message());
    if (taken != text.size()) throw foundation::json::ParseError("Parse incomplete");
    return std::move(parser.handler());
}

} // namespace gsheet
