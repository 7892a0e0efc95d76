// SPDX-License-Identifier: Apache-2.0
//
// Streams come first, in the order of the directory; the tables follow, when all sizes are known,
// and the header is filled in last.
#include "workbook/cfb/compound_writer.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "foundation/unicode.h"
#include "workbook/cfb/compound_format.h"
#include "workbook/cfb/directory_writer.h"
#include "workbook/cfb/sector_writer.h"
#include "workbook/error.h"

namespace workbook {

namespace {

using foundation::files::OutputFile;

constexpr std::size_t kMaxNameUnits = 31;

/// What the new file's directory will hold: the source's entries that stay and the new ones.
class EntryPlan {
  public:
    EntryPlan(const CompoundFile* source, const CompoundChanges& changes) {
        if (source != nullptr) {
            take_over(*source, changes);
        } else {
            CompoundEntry root{u"Root Entry", EntryKind::Root, 0, {}, 0, 0};
            root.attributes.class_id = changes.class_id;
            add(std::move(root), nullptr);
        }
        for (const StreamChange& wanted : changes.written)
            place(wanted);
    }

    std::vector<CompoundEntry> entries;
    std::vector<const CompoundEntry*> copied_from; ///< of each entry; null for a new one
    std::vector<const StreamChange*> change;       ///< of each entry; null for one that is kept
    std::size_t dropped = 0;                       ///< streams

  private:
    void add(CompoundEntry entry, const CompoundEntry* source) {
        entries.push_back(std::move(entry));
        copied_from.push_back(source);
        change.push_back(nullptr);
    }

    void take_over(const CompoundFile& source, const CompoundChanges& changes) {
        std::vector<const CompoundEntry*> gone;
        for (const std::u16string& path : changes.dropped)
            for (const CompoundEntry* entry : {source.find_stream(path), source.find_storage(path)})
                if (entry != nullptr && entry->kind != EntryKind::Root) gone.push_back(entry);
        constexpr std::size_t kGone = static_cast<std::size_t>(-1);
        std::vector<std::size_t> new_index;
        for (const CompoundEntry& entry : source.entries()) {
            const bool is_root = entry.kind == EntryKind::Root;
            const std::size_t parent = is_root ? 0 : new_index[entry.parent];
            if (parent == kGone || std::find(gone.begin(), gone.end(), &entry) != gone.end()) {
                new_index.push_back(kGone);
                if (entry.kind == EntryKind::Stream) ++dropped;
                continue;
            }
            new_index.push_back(entries.size());
            add(entry, &entry);
            entries.back().parent = parent;
        }
    }

    /// Finds or makes the stream of a change and the storages on the way to it.
    void place(const StreamChange& wanted) {
        std::u16string_view path = wanted.path;
        std::size_t at = 0;
        for (bool is_last = false; !is_last;) {
            const std::size_t slash = path.find(u'/');
            is_last = slash == std::u16string_view::npos;
            at = child(at, path.substr(0, slash), is_last ? EntryKind::Stream : EntryKind::Storage);
            if (!is_last) path.remove_prefix(slash + 1);
        }
        change[at] = &wanted;
    }

    std::size_t child(std::size_t storage, std::u16string_view name, EntryKind kind) {
        for (std::size_t i = 1; i < entries.size(); ++i)
            if (entries[i].parent == storage && entries[i].kind == kind &&
                foundation::unicode::equal_ignoring_case(entries[i].name, name))
                return i;
        if (name.empty() || name.size() > kMaxNameUnits)
            throw Error::refused("a stream's name in a compound file has 1 to 31 characters");
        add({std::u16string(name), kind, storage, {}, 0, 0}, nullptr);
        return entries.size() - 1;
    }
};

class CompoundCopy {
  public:
    CompoundCopy(CompoundFile* source, const CompoundChanges& changes, OutputFile& out)
        : source_(source),
          plan_(source, changes),
          writer_(out, source != nullptr ? source->sector_bytes() : kNewFileSectorBytes) {}

    CompoundCounts write() {
        CompoundCounts counts;
        counts.dropped = plan_.dropped;
        for (std::size_t i = 0; i < plan_.entries.size(); ++i) {
            CompoundEntry& entry = plan_.entries[i];
            if (entry.kind != EntryKind::Stream) {
                entry.first_sector = 0; // MS-CFB 2.6.3
                entry.size = 0;
                continue;
            }
            ByteSink& sink = writer_.begin_stream();
            if (plan_.change[i] != nullptr) {
                plan_.change[i]->write(sink);
                ++counts.written;
            } else {
                copy(*plan_.copied_from[i], sink);
                ++counts.copied;
            }
            writer_.end_stream(entry.first_sector, entry.size);
        }
        writer_.finish(plan_.entries);
        return counts;
    }

  private:
    static constexpr std::uint32_t kNewFileSectorBytes = 512;

    void copy(const CompoundEntry& stream, ByteSink& sink) {
        const std::unique_ptr<ByteSource> bytes = source_->open_stream(stream);
        // Streams that share their sectors would make a small file a huge one.
        if (stream.size > source_->file_size() - copied_bytes_)
            throw Error::damaged("the compound file", "streams share their sectors");
        copied_bytes_ += stream.size;
        block_.resize(kBlockBytes);
        while (const std::size_t count = bytes->read(block_.data(), block_.size()))
            sink.append(block_.data(), count);
    }

    static constexpr std::size_t kBlockBytes = 64u << 10;

    CompoundFile* source_;
    EntryPlan plan_;
    SectorWriter writer_;
    std::uint64_t copied_bytes_ = 0;
    std::string block_;
};

} // namespace

CompoundCounts write_compound_file(CompoundFile* source, const CompoundChanges& changes,
                                   OutputFile& out) {
    return CompoundCopy(source, changes, out).write();
}

} // namespace workbook
