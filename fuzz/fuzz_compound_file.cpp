// SPDX-License-Identifier: Apache-2.0
//
// Compound files: whatever can be read is written as a file with the same streams.
#include <cstdlib>
#include <map>

#include "foundation/output_file.h"
#include "fuzz/parse.h"
#include "workbook/cfb/compound_writer.h"

namespace {

/// Bytes and attributes of all entries, by storage and name; duplicates included.
std::multimap<std::u16string, std::string> contents(workbook::CompoundFile& file) {
    std::multimap<std::u16string, std::string> all;
    for (const workbook::CompoundEntry& entry : file.entries())
        if (entry.kind == workbook::EntryKind::Stream)
            all.emplace(file.entries()[entry.parent].name + u'/' + entry.name,
                        file.read_stream(entry) + std::to_string(entry.attributes.state_bits));
    return all;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace workbook;
    return fuzz::run(data, size, [](const std::string& bytes) {
        CompoundFile file(foundation::files::memory_file(bytes));
        file.find_stream(u"Workbook");
        std::string copy;
        const auto out = foundation::files::memory_output(copy);
        write_compound_file(&file, {}, *out);
        CompoundFile again(foundation::files::memory_file(copy));
        if (contents(file) != contents(again)) std::abort();
    });
}
