// SPDX-License-Identifier: Apache-2.0
#include "spreadsheet/gsheet/arguments.h"

#include <exception>
#include <memory>
#include <new>
#include <utility>

#include "foundation/features.h"
#include "foundation/log.h"
#include "foundation/unicode.h"
#include "spreadsheet/exception.h"
#include "spreadsheet/gsheet/utils/host_errors.h"
#include "spreadsheet/gsheet/utils/service_log.h"
#include "spreadsheet/gsheet/utils/util_gsheet.h"
#include "spreadsheet/with_failure.h"

namespace gsheet {

namespace {

using foundation::HostClass;

void check_feature() {
    if (foundation::features::is_on("GOOGLESHEETS")) return;
    log_line(foundation::log::error,
             "Feature GOOGLESHEETS needs to be turned on for further processing.");
    throw_host_error<Zentra::spreadsheet::gsheet::FeatureFlag>();
}

void check_counts(const HostCall& call, InputCounts counts) {
    if (call.output_count > 1) throw_host_error<Zentra::builtins::TooManyOutputs>();
    if (call.input_count > counts.most) throw_host_error<Zentra::builtins::TooManyInputs>();
    if (call.input_count < counts.least) throw_host_error<Zentra::builtins::TooFewInputs>();
}

/// Throws the host's error for the exception, with the same cause.
[[noreturn]] void translate(const spreadsheet::Exception& exception) {
    try {
        translateToHostError(exception);
    } catch (const foundation::core::except::IMessageId& error) {
        spreadsheet::pass_failure(exception, error);
        throw;
    }
}

HostArrayPtr with_host_errors(const std::function<HostArrayPtr()>& work) {
    try {
        return work();
    } catch (const foundation::core::except::IMessageId&) {
        throw;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const spreadsheet::Exception& error) {
        translate(error);
    } catch (const std::exception& error) {
        throw_host_error<Zentra::spreadsheet::book::internalError>(without_secrets(error.what()));
    }
}

[[noreturn]] void refuse_text() {
    throw_host_error<Zentra::string::MustBeStringScalarOrCharacterVector>();
}

std::u16string string_element(const HostArray& array, std::size_t index) {
    if (array.is_missing(index)) throw_host_error<Zentra::string::MissingNotSupported>();
    return array.strings()[index];
}

} // namespace

void run_builtin(const HostCall& call, InputCounts counts,
                 const std::function<HostArrayPtr()>& work) {
    check_feature();
    check_counts(call, counts);
    HostArrayPtr result = with_host_errors(work);
    if (call.outputs != nullptr) call.outputs[0] = std::move(result);
}

std::u16string text_of(const HostArray* array) {
    if (array == nullptr) refuse_text();
    if (array->host_class() == HostClass::String && array->strings() != nullptr &&
        array->size() == 1)
        return string_element(*array, 0);
    const bool is_vector = array->rows() == 1 || array->size() == 0;
    if (array->host_class() != HostClass::Character || !is_vector) refuse_text();
    if (array->size() == 0) return {};
    if (array->characters() == nullptr) refuse_text();
    return {array->characters(), array->size()};
}

std::vector<std::u16string> texts_of(const HostArray* array) {
    std::vector<std::u16string> texts;
    if (array != nullptr && array->host_class() == HostClass::Cell) {
        for (std::size_t index = 0; index < array->size(); ++index)
            texts.push_back(text_of(array->cell(index)));
    } else if (array != nullptr && array->host_class() == HostClass::String &&
               array->strings() != nullptr) {
        for (std::size_t index = 0; index < array->size(); ++index)
            texts.push_back(string_element(*array, index));
    } else {
        texts.push_back(text_of(array));
    }
    return texts;
}

void check_logical_scalar(const HostArray* array) {
    if (array == nullptr || array->host_class() != HostClass::Logical || array->size() != 1)
        throw_host_error<Zentra::builtins::MustBeLogicalScalar>();
}

HostArrayPtr character_array(std::string_view text) {
    const std::u16string units = foundation::unicode::to_utf16(text);
    auto array = std::make_unique<foundation::CharacterArray>(1, units.size());
    units.copy(array->data(), units.size());
    return array;
}

} // namespace gsheet
