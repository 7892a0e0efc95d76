// SPDX-License-Identifier: Apache-2.0
//
// ZIP containers: the directory and every entry of it.
#include "fuzz/parse.h"
#include "workbook/zip/zip_archive.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return workbook::fuzz::run(data, size, [](const std::string& text) {
        workbook::ZipArchive archive(foundation::files::memory_file(text));
        for (const workbook::ZipEntry& entry : archive.entries()) {
            try {
                workbook::test::read_all(*archive.open(entry), 4096);
            } catch (const workbook::Error&) {
                // The other entries are still to be read.
            }
        }
    });
}
