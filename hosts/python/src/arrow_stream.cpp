// SPDX-License-Identifier: Apache-2.0
//
// The structures are those of the Arrow C data and C stream interfaces. A consumer may call them
// from any thread and may move a child out of its parent, so each array owns what it refers to.
#include "arrow_stream.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <pybind11/numpy.h>

#include "spreadsheet/table.h"

extern "C" {
struct ArrowSchema {
    const char* format;
    const char* name;
    const char* metadata;
    std::int64_t flags;
    std::int64_t n_children;
    ArrowSchema** children;
    ArrowSchema* dictionary;
    void (*release)(ArrowSchema*);
    void* private_data;
};

struct ArrowArray {
    std::int64_t length;
    std::int64_t null_count;
    std::int64_t offset;
    std::int64_t n_buffers;
    std::int64_t n_children;
    const void** buffers;
    ArrowArray** children;
    ArrowArray* dictionary;
    void (*release)(ArrowArray*);
    void* private_data;
};

struct ArrowArrayStream {
    int (*get_schema)(ArrowArrayStream*, ArrowSchema*);
    int (*get_next)(ArrowArrayStream*, ArrowArray*);
    const char* (*get_last_error)(ArrowArrayStream*);
    void (*release)(ArrowArrayStream*);
    void* private_data;
};
}

namespace zxpython {
namespace {

namespace py = pybind11;
using spreadsheet::ColumnType;

constexpr std::int64_t kNullable = 2;

/// Where a buffer has no elements, and so no memory.
constexpr std::array<std::int64_t, 1> kNoElements{};

/// What a schema or an array owns besides its children's own possessions.
template <class Item>
struct Owner {
    std::string name;
    std::vector<py::object> kept;
    std::vector<const void*> buffers;
    std::vector<Item> children;
    std::vector<Item*> child_pointers;
    std::unique_ptr<Item> dictionary;
};

template <class Item>
void release_item(Item* item) {
    auto* const owner = static_cast<Owner<Item>*>(item->private_data);
    for (Item& child : owner->children)
        if (child.release != nullptr) child.release(&child); // else it was moved away
    if (owner->dictionary && owner->dictionary->release != nullptr)
        owner->dictionary->release(owner->dictionary.get());
    item->release = nullptr;
    // After the interpreter's end its objects are gone, and their memory is the system's.
    if (owner->kept.empty()) {
        delete owner;
    } else if (Py_IsInitialized() != 0) {
        const py::gil_scoped_acquire acquire;
        delete owner;
    }
}

/// Gives `item` its owner, whose children and dictionary are complete.
template <class Item>
void set_owner(Item& item, std::unique_ptr<Owner<Item>> owner) {
    for (Item& child : owner->children)
        owner->child_pointers.push_back(&child);
    item.n_children = static_cast<std::int64_t>(owner->children.size());
    item.children = owner->child_pointers.data();
    item.dictionary = owner->dictionary.get();
    item.release = release_item<Item>;
    item.private_data = owner.release();
}

ColumnType type_of(const py::dict& parts) {
    return static_cast<ColumnType>(py::cast<int>(parts["type"]));
}

const char* format_of(ColumnType type) {
    switch (type) {
    case ColumnType::number:
        return "g";
    case ColumnType::boolean:
        return "b";
    case ColumnType::date:
        return "tsu:";
    default:
        return "i"; // codes into the dictionary
    }
}

const char* values_of(ColumnType type) {
    switch (type) {
    case ColumnType::number:
        return "numbers";
    case ColumnType::boolean:
        return "packed";
    case ColumnType::date:
        return "microseconds";
    default:
        return "codes";
    }
}

ArrowSchema plain_schema(const char* format, std::string name) {
    ArrowSchema schema{};
    schema.format = format;
    schema.flags = kNullable;
    auto owner = std::make_unique<Owner<ArrowSchema>>();
    owner->name = std::move(name);
    schema.name = owner->name.c_str();
    set_owner(schema, std::move(owner));
    return schema;
}

ArrowSchema column_schema(const py::dict& parts) {
    const ColumnType type = type_of(parts);
    ArrowSchema schema = plain_schema(format_of(type), py::cast<std::string>(parts["name"]));
    if (type == ColumnType::text) {
        auto* const owner = static_cast<Owner<ArrowSchema>*>(schema.private_data);
        owner->dictionary = std::make_unique<ArrowSchema>(plain_schema("u", ""));
        schema.dictionary = owner->dictionary.get();
    }
    return schema;
}

/// Appends the memory of an array in `parts` and keeps it alive.
void add_buffer(Owner<ArrowArray>& owner, const py::dict& parts, const char* name) {
    if (!parts.contains(name)) return owner.buffers.push_back(kNoElements.data());
    const auto array = py::cast<py::array>(parts[name]);
    owner.buffers.push_back(array.size() == 0 ? kNoElements.data() : array.data());
    owner.kept.push_back(array);
}

void finish_array(ArrowArray& array, std::unique_ptr<Owner<ArrowArray>> owner) {
    array.n_buffers = static_cast<std::int64_t>(owner->buffers.size());
    array.buffers = owner->buffers.data();
    set_owner(array, std::move(owner));
}

ArrowArray strings_array(const py::dict& parts) {
    ArrowArray array{};
    auto owner = std::make_unique<Owner<ArrowArray>>();
    if (parts.contains("offsets")) array.length = py::cast<py::array>(parts["offsets"]).size() - 1;
    owner->buffers.push_back(nullptr);
    add_buffer(*owner, parts, "offsets");
    add_buffer(*owner, parts, "bytes");
    finish_array(array, std::move(owner));
    return array;
}

ArrowArray column_array(const py::dict& parts, std::size_t rows) {
    const ColumnType type = type_of(parts);
    ArrowArray array{};
    array.length = static_cast<std::int64_t>(rows);
    array.null_count = py::cast<std::int64_t>(parts["null_count"]);
    auto owner = std::make_unique<Owner<ArrowArray>>();
    if (array.null_count == 0)
        owner->buffers.push_back(nullptr);
    else
        add_buffer(*owner, parts, "validity");
    add_buffer(*owner, parts, values_of(type));
    if (type == ColumnType::text)
        owner->dictionary = std::make_unique<ArrowArray>(strings_array(parts));
    finish_array(array, std::move(owner));
    return array;
}

struct StreamState {
    py::list columns;
    std::size_t rows;
    bool is_given = false; ///< the one array of the stream
    std::string error;
};

StreamState& state_of(ArrowArrayStream* stream) {
    return *static_cast<StreamState*>(stream->private_data);
}

/// Runs a callback of the stream; what it throws is its last error.
template <class Fill>
int run_callback(ArrowArrayStream* stream, Fill fill) {
    const py::gil_scoped_acquire acquire;
    StreamState& state = state_of(stream);
    try {
        fill(state);
        return 0;
    } catch (const std::exception& failure) {
        state.error = failure.what();
        return EIO;
    }
}

int get_schema(ArrowArrayStream* stream, ArrowSchema* out) {
    return run_callback(stream, [&](const StreamState& state) {
        auto owner = std::make_unique<Owner<ArrowSchema>>();
        owner->children.reserve(state.columns.size());
        for (const py::handle column : state.columns)
            owner->children.push_back(column_schema(py::cast<py::dict>(column)));
        *out = ArrowSchema{};
        out->format = "+s";
        out->name = "";
        set_owner(*out, std::move(owner));
    });
}

int get_next(ArrowArrayStream* stream, ArrowArray* out) {
    return run_callback(stream, [&](StreamState& state) {
        *out = ArrowArray{};
        if (state.is_given) return; // released: the end
        auto owner = std::make_unique<Owner<ArrowArray>>();
        owner->children.reserve(state.columns.size());
        for (const py::handle column : state.columns)
            owner->children.push_back(column_array(py::cast<py::dict>(column), state.rows));
        owner->buffers.push_back(nullptr);
        out->length = static_cast<std::int64_t>(state.rows);
        finish_array(*out, std::move(owner));
        state.is_given = true;
    });
}

void release_stream(ArrowArrayStream* stream) {
    stream->release = nullptr;
    if (Py_IsInitialized() == 0) return;
    const py::gil_scoped_acquire acquire;
    delete &state_of(stream);
}

} // namespace

py::capsule arrow_stream(const py::list& columns, std::size_t rows) {
    auto stream = std::make_unique<ArrowArrayStream>();
    *stream = {get_schema, get_next,
               [](ArrowArrayStream* from) { return state_of(from).error.c_str(); }, release_stream,
               new StreamState{columns, rows, false, {}}};
    return py::capsule(stream.release(), "arrow_array_stream", [](PyObject* capsule) {
        auto* const owned =
            static_cast<ArrowArrayStream*>(PyCapsule_GetPointer(capsule, "arrow_array_stream"));
        if (owned == nullptr) return PyErr_Clear();
        if (owned->release != nullptr) owned->release(owned);
        delete owned;
    });
}

} // namespace zxpython
