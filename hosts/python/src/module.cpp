// SPDX-License-Identifier: Apache-2.0
//
// The compiled half of the package `zxspreadsheet`. Nothing here is for users; the Python half
// gives it its shape.
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include "arrow_stream.h"
#include "book.h"
#include "foundation/unicode.h"
#include "spreadsheet/gsheet/credentials.h"
#include "spreadsheet/gsheet/utils/endpoints.h"
#include "waiting.h"

namespace {

namespace py = pybind11;
using zxpython::Book;

/// Raises the package's class for the kind of cause.
void raise(const spreadsheet::Exception& error) {
    const spreadsheet::Failure failure = spreadsheet::failure_of(error);
    const py::object made =
        py::module_::import("zxspreadsheet._errors")
            .attr("make_error")(static_cast<int>(error.id()), static_cast<int>(failure.kind),
                                failure.cause, foundation::unicode::to_utf8(failure.file),
                                failure.service.http_status, failure.service.status,
                                failure.service.reason);
    PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(made.ptr())), made.ptr());
}

void translate(std::exception_ptr thrown) {
    try {
        if (thrown) std::rethrow_exception(thrown);
    } catch (const spreadsheet::Exception& error) {
        try {
            raise(error);
        } catch (py::error_already_set& other) {
            other.restore();
        }
    }
}

/// Google Sheets itself where `root` is empty; another address is used for everything.
void use_google(const std::string& root) {
    gsheet::Endpoints endpoints;
    if (!root.empty()) {
        const std::u16string address = foundation::unicode::to_utf16(root);
        endpoints = {address, address, address, address};
    }
    gsheet::set_endpoints(endpoints);
    gsheet::use_credential_search(true);
}

} // namespace

PYBIND11_MODULE(_zxspreadsheet, module) {
    spreadsheet::initialize();
    py::module_::import("atexit").attr("register")(py::cpp_function([] {
        {
            py::gil_scoped_release release;
            zxpython::join_abandoned();
        }
        spreadsheet::release();
    }));
    py::register_exception_translator(translate);

    py::enum_<Book::Place>(module, "Place")
        .value("File", Book::Place::File)
        .value("Application", Book::Place::Application)
        .value("Google", Book::Place::Google);
    py::class_<Book>(module, "Book")
        .def_static("load", &Book::load)
        .def_static("load_names", &Book::load_names)
        .def_static("load_sheet", &Book::load_sheet)
        .def_static("load_rows", &Book::load_rows)
        .def_static("create", &Book::create)
        .def("format", &Book::format)
        .def("are_dates_1904", &Book::are_dates_1904)
        .def("sheet_names", &Book::sheet_names)
        .def("is_chart", &Book::is_chart)
        .def("names", &Book::names)
        .def("resolve", &Book::resolve)
        .def("used_range", &Book::used_range)
        .def("read_table", &Book::read_table)
        .def("read_numbers", &Book::read_numbers)
        .def("cell_types", &Book::cell_types)
        .def("write_table", &Book::write_table)
        .def("write_numbers", &Book::write_numbers)
        .def("clear", &Book::clear)
        .def("add_sheet", &Book::add_sheet)
        .def("remove_sheet", &Book::remove_sheet)
        .def("move_sheet", &Book::move_sheet)
        .def("rename_sheet", &Book::rename_sheet)
        .def("visibility", &Book::visibility)
        .def("set_visibility", &Book::set_visibility)
        .def("is_protected", &Book::is_protected)
        .def("set_protected", &Book::set_protected)
        .def("save", &Book::save);
    module.def("use_google", &use_google);
    module.def("arrow_stream", &zxpython::arrow_stream);
    module.def("microseconds_from_serial", &spreadsheet::microseconds_from_serial);
    module.def("serial_from_microseconds", &spreadsheet::serial_from_microseconds);
    module.def("range_text", [](const zxpython::Corners& corners) {
        const auto [first_row, first_column, last_row, last_column] = corners;
        return foundation::unicode::to_utf8(
            spreadsheet::range_string({first_row, first_column, last_row, last_column}));
    });
    module.attr("version") = ZXSPREADSHEET_VERSION;
}
