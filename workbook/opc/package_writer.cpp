// SPDX-License-Identifier: Apache-2.0
//
// Goes over the entries of the source in their order, then over the new parts.
#include "workbook/opc/package_writer.h"

#include <string_view>
#include <unordered_map>

#include "workbook/error.h"
#include "workbook/opc/part_name.h"
#include "workbook/zip/zip_writer.h"

namespace workbook {

namespace {

class PackageCopy {
  public:
    PackageCopy(ZipArchive& source, const PackageChanges& changes,
                foundation::files::OutputFile& out)
        : source_(source), changes_(changes), zip_(out) {
        for (const PartChange& change : changes.written)
            pending_.emplace(change.part, &change);
    }

    PackageCounts write() {
        for (const ZipEntry& entry : source_.entries())
            take_over(entry);
        for (const PartChange& change : changes_.written)
            if (pending_.contains(change.part)) write_part(change, new_part_spelling(change.part));
        zip_.finish();
        return counts_;
    }

  private:
    void take_over(const ZipEntry& entry) {
        const std::string part = canonical_part_name(entry.name);
        if (const auto pending = pending_.find(part); pending != pending_.end()) {
            write_part(*pending->second, entry.name);
        } else if (done_.contains(part)) {
            return; // a second entry of a name that is written again
        } else if (changes_.dropped.contains(part)) {
            ++counts_.dropped;
        } else {
            copy(entry);
        }
    }

    void copy(const ZipEntry& entry) {
        // Entries that share their bytes would make a small file a huge one.
        if (entry.packed_size > source_.file_size() - copied_bytes_)
            throw Error::damaged(entry.name, "it shares its bytes with another part");
        copied_bytes_ += entry.packed_size;
        zip_.copy_entry(source_, entry);
        ++counts_.copied;
    }

    void write_part(const PartChange& change, std::string_view name) {
        change.write(zip_.begin_entry(name, change.expected_bytes));
        zip_.end_entry();
        pending_.erase(change.part);
        done_.insert(change.part);
        ++counts_.written;
    }

    ZipArchive& source_;
    const PackageChanges& changes_;
    ZipWriter zip_;
    std::unordered_map<std::string, const PartChange*> pending_;
    std::unordered_set<std::string> done_;
    std::uint64_t copied_bytes_ = 0;
    PackageCounts counts_;
};

} // namespace

PackageCounts write_package(OpcPackage& source, const PackageChanges& changes,
                            foundation::files::OutputFile& out) {
    return PackageCopy(source.archive(), changes, out).write();
}

} // namespace workbook
