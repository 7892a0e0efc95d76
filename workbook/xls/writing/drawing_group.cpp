// SPDX-License-Identifier: Apache-2.0
#include "workbook/xls/writing/drawing_group.h"

#include <algorithm>
#include <map>
#include <optional>
#include <utility>

#include "workbook/io/little_endian.h"
#include "workbook/xls/record_ids.h"
#include "workbook/xls/record_stream.h"

namespace workbook {

namespace {

constexpr std::size_t kHeaderBytes = 8;
constexpr int kMostNested = 64; ///< groups within groups

// Record types (MS-ODRAW 2.2).
enum Type : std::uint16_t {
    kGroupContainer = 0xF000,
    kPictureStore = 0xF001,
    kDrawingContainer = 0xF002,
    kGroupBlock = 0xF006,
    kPictureEntry = 0xF007,
    kDrawingHeader = 0xF008,
    kShape = 0xF00A,
    kProperties = 0xF00B,
    kConnectorRule = 0xF012,
    kArcRule = 0xF014,
    kCalloutRule = 0xF017,
    kMovedShape = 0xF11D,
    kMoreProperties = 0xF121,
    kNewerProperties = 0xF122
};

constexpr std::uint32_t kClusterBits = 10; ///< of the number of a shape within its cluster
constexpr std::uint32_t kClusterMask = (1u << kClusterBits) - 1;
constexpr std::uint32_t kMostShapes = 0x03FFD7FF; ///< 2.2.47
constexpr std::uint32_t kMostDrawings = 0xFFE;    ///< 2.2.49

struct ArtRecord {
    std::uint16_t type = 0, instance = 0;
    bool is_container = false;
    std::size_t header = 0, body = 0, end = 0;
    std::size_t size() const { return end - body; }
};

std::optional<ArtRecord> art_record(std::string_view data, std::size_t at, std::size_t end) {
    if (end - at < kHeaderBytes) return {};
    const std::uint16_t start = load_u16(data.data() + at);
    const std::uint32_t size = load_u32(data.data() + at + 4);
    ArtRecord record{load_u16(data.data() + at + 2), static_cast<std::uint16_t>(start >> 4),
                     (start & 0xF) == 0xF, at, at + kHeaderBytes};
    if (size > end - record.body) return {};
    record.end = record.body + size;
    return record;
}

/// Visits the records within a container, those of containers after the containers themselves;
/// false when one breaks the format.
template <class Visit>
bool walk(std::string_view data, std::size_t begin, std::size_t end, const Visit& visit,
          int depth = 0) {
    if (depth > kMostNested) return false;
    for (std::size_t at = begin; at < end;) {
        const auto record = art_record(data, at, end);
        if (!record || !visit(*record)) return false;
        if (record->is_container && !walk(data, record->body, record->end, visit, depth + 1))
            return false;
        at = record->end;
    }
    return true;
}

void store_u32(std::string& data, std::size_t at, std::uint32_t value) {
    for (int i = 0; i < 4; ++i, value >>= 8)
        data[at + static_cast<std::size_t>(i)] = static_cast<char>(value & 0xFF);
}

/// What a drawing has that a copy of it has otherwise.
struct DrawingSurvey {
    std::size_t header = 0;            ///< of the FDG record
    std::size_t last_shape = 0;        ///< position of a shape's number, as all below
    std::vector<ArtRecord> shapes;     ///< FSP records
    std::vector<std::size_t> numbers;  ///< in rules about shapes
    std::vector<std::uint32_t> images; ///< one-based numbers of pictures, one for each use

    bool visit(std::string_view data, const ArtRecord& record) {
        switch (record.type) {
        case kDrawingHeader:
            header = record.header;
            last_shape = record.body + 4;
            return record.size() >= 8;
        case kShape:
            shapes.push_back(record);
            return record.size() >= 8;
        case kConnectorRule:
            return add_numbers(record, {4, 8, 12});
        case kArcRule:
        case kCalloutRule:
            return add_numbers(record, {4});
        case kMovedShape:
            return add_numbers(record, {0});
        case kProperties:
        case kMoreProperties:
        case kNewerProperties:
            return visit_properties(data, record);
        default:
            return true;
        }
    }

  private:
    bool add_numbers(const ArtRecord& record, std::initializer_list<std::size_t> offsets) {
        for (const std::size_t offset : offsets) {
            if (offset + 4 > record.size()) return false;
            numbers.push_back(record.body + offset);
        }
        return true;
    }

    bool visit_properties(std::string_view data, const ArtRecord& record) {
        constexpr std::size_t kPropertyBytes = 6;
        constexpr std::uint16_t kNumber = 0x3FFF, kIsImage = 0x4000, kNextShape = 0x008A;
        if (record.size() < kPropertyBytes * record.instance) return false;
        for (std::size_t i = 0; i < record.instance; ++i) {
            const std::size_t at = record.body + i * kPropertyBytes;
            const std::uint16_t id = load_u16(data.data() + at);
            if ((id & kIsImage) != 0) images.push_back(load_u32(data.data() + at + 2));
            if ((id & kNumber) == kNextShape) numbers.push_back(at + 2);
        }
        return true;
    }
};

// Flags and types of an FSP record (2.2.40).
constexpr std::uint32_t kHasSource = 0x10;
constexpr std::uint16_t kHostControl = 201, kPictureFrame = 75;

void make_picture(std::string& data, const ArtRecord& shape) {
    const std::size_t flags = shape.body + 4;
    store_u32(data, flags, load_u32(data.data() + flags) & ~kHasSource);
    if (shape.instance != kHostControl) return;
    constexpr std::uint16_t kVersion = 2, kStart = kPictureFrame << 4 | kVersion;
    data[shape.header] = static_cast<char>(kStart & 0xFF);
    data[shape.header + 1] = static_cast<char>(kStart >> 8);
}

} // namespace

DrawingGroup DrawingGroup::of_book(std::string_view stream) {
    std::string data;
    std::uint16_t last = 0;
    RecordStream records(stream, 0);
    while (records.next() && records.record().id != record::kEof) {
        if (records.record().id != record::kContinue) last = records.record().id;
        if (last == record::kDrawingGroup) data += records.record().data;
    }
    return DrawingGroup(std::move(data));
}

DrawingGroup::DrawingGroup(std::string data) : data_(std::move(data)) {
    constexpr std::size_t kFixedBytes = 16, kClusterBytes = 8;
    const auto container = art_record(data_, 0, data_.size());
    if (!container || container->type != kGroupContainer) return;
    std::optional<ArtRecord> block;
    for (std::size_t at = container->body; at < container->end;) {
        const auto record = art_record(data_, at, container->end);
        if (!record) return;
        if (record->type == kGroupBlock) block = record;
        if (record->type == kPictureStore) find_pictures(record->body, record->end);
        at = record->end;
    }
    if (!block || block->size() < kFixedBytes) return;
    const auto field = [&](std::size_t i) { return load_u32(data_.data() + block->body + 4 * i); };
    highest_shape_ = field(0);
    shapes_ = field(2);
    drawings_ = field(3);
    const std::size_t count = (block->size() - kFixedBytes) / kClusterBytes;
    for (std::size_t i = 0; i < count && i + 1 < field(1); ++i)
        clusters_.push_back({field(4 + 2 * i), field(5 + 2 * i)});
    block_ = block->header;
    block_end_ = block->end;
}

void DrawingGroup::find_pictures(std::size_t begin, std::size_t end) {
    constexpr std::size_t kUseCount = 24;
    for (std::size_t at = begin; at < end;) {
        const auto record = art_record(data_, at, end);
        if (!record) return;
        if (record->type == kPictureEntry)
            use_counts_.push_back(record->size() < kUseCount + 4 ? 0 : record->body + kUseCount);
        at = record->end;
    }
}

bool DrawingGroup::enter_copy(Drawing& drawing) {
    std::string& data = drawing.data;
    const auto container = art_record(data, 0, data.size());
    DrawingSurvey survey;
    if (block_ == 0 || !container || container->type != kDrawingContainer) return false;
    if (!walk(data, container->body, container->end,
              [&](const ArtRecord& record) { return survey.visit(data, record); }) ||
        survey.header == 0)
        return false;

    std::map<std::uint32_t, std::uint32_t> used; ///< numbers that are taken, by old cluster
    for (const ArtRecord& shape : survey.shapes) {
        const std::uint32_t number = load_u32(data.data() + shape.body);
        std::uint32_t& taken = used[number >> kClusterBits];
        taken = std::max(taken, (number & kClusterMask) + 1);
    }
    std::uint32_t drawing_number = 0;
    for (const Cluster& cluster : clusters_)
        drawing_number = std::max(drawing_number, cluster.drawing);
    ++drawing_number;
    const std::size_t last_cluster = clusters_.size() + used.size();
    if (drawing_number > kMostDrawings || ((last_cluster + 1) << kClusterBits) > kMostShapes)
        return false;

    std::map<std::uint32_t, std::uint32_t> new_cluster;
    for (const auto& [old, taken] : used) {
        clusters_.push_back({drawing_number, taken});
        new_cluster[old] = static_cast<std::uint32_t>(clusters_.size());
        highest_shape_ = std::max(
            highest_shape_, static_cast<std::uint32_t>(clusters_.size() << kClusterBits) + taken);
    }
    const auto renumber = [&](std::size_t at) {
        const std::uint32_t number = load_u32(data.data() + at);
        const auto found = new_cluster.find(number >> kClusterBits);
        if (number != 0 && found != new_cluster.end())
            store_u32(data, at, found->second << kClusterBits | (number & kClusterMask));
    };
    for (const ArtRecord& shape : survey.shapes)
        renumber(shape.body);
    for (const std::size_t at : survey.numbers)
        renumber(at);
    renumber(survey.last_shape);
    data[survey.header] = static_cast<char>((drawing_number & 0xF) << 4);
    data[survey.header + 1] = static_cast<char>(drawing_number >> 4);

    for (const std::size_t end : drawing.pictures) {
        const auto after =
            std::upper_bound(survey.shapes.begin(), survey.shapes.end(), end,
                             [](std::size_t size, const ArtRecord& one) { return size < one.end; });
        if (after != survey.shapes.begin()) make_picture(data, *(after - 1));
    }
    for (const std::uint32_t image : survey.images)
        if (image != 0 && image <= use_counts_.size() && use_counts_[image - 1] != 0)
            store_u32(data_, use_counts_[image - 1],
                      load_u32(data_.data() + use_counts_[image - 1]) + 1);
    shapes_ += static_cast<std::uint32_t>(survey.shapes.size());
    ++drawings_;
    has_changed_ = true;
    return true;
}

std::string DrawingGroup::data() const {
    if (!has_changed_) return data_;
    std::string block;
    append_u16(block, 0);
    append_u16(block, kGroupBlock);
    append_u32(block, static_cast<std::uint32_t>(16 + 8 * clusters_.size()));
    for (const std::uint32_t field :
         {highest_shape_, static_cast<std::uint32_t>(clusters_.size() + 1), shapes_, drawings_})
        append_u32(block, field);
    for (const Cluster& cluster : clusters_) {
        append_u32(block, cluster.drawing);
        append_u32(block, cluster.used);
    }
    std::string result = data_;
    const std::size_t size = load_u32(result.data() + 4) + block.size() - (block_end_ - block_);
    store_u32(result, 4, static_cast<std::uint32_t>(size));
    result.replace(block_, block_end_ - block_, block);
    return result;
}

} // namespace workbook
