// SPDX-License-Identifier: Apache-2.0
#include "workbook/xls/writing/sheet_copy.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

#include "workbook/io/little_endian.h"
#include "workbook/xls/record_ids.h"
#include "workbook/xls/record_stream.h"
#include "workbook/xls/writing/formula_records.h"
#include "workbook/xls/writing/object_fields.h"
#include "workbook/xls/writing/record_writer.h"

namespace workbook {

namespace {

/// Walks the records of one substream and those within it, up to its end.
class SubstreamWalk {
  public:
    SubstreamWalk(std::string_view stream, std::size_t position) : records_(stream, position) {}

    bool next() {
        if (begun_ > 0 && record().id == record::kEof) {
            open_.pop_back();
            if (open_.empty()) return false;
        }
        if (!records_.next()) return false;
        if (begun_ == 0 || record::is_bof(record().id)) open_.push_back(begun_++);
        return true;
    }
    const Record& record() const { return records_.record(); }
    /// The number of the substream that the record is in; 0 for the outermost.
    std::size_t substream() const { return open_.back(); }

  private:
    RecordStream records_;
    std::vector<std::size_t> open_;
    std::size_t begun_ = 0;
};

/// Decides which records hold the drawing of a substream. It goes on in CONTINUE records, also
/// those after what belongs to a shape.
class DrawingRecords {
  public:
    bool is_part(const Record& record) {
        if (record.id == record::kDrawing) {
            last_ = Last::Drawing;
            return true;
        }
        if (record.id != record::kContinue) {
            last_ = record.id == record::kTextObject ? Last::Text
                    : record.id == record::kObject   ? Last::Drawing
                                                     : Last::Other;
            if (last_ == Last::Text) begin_text(record);
            return false;
        }
        if (last_ == Last::Text && (characters_ != 0 || run_bytes_ != 0)) {
            pass_text(record);
            return false;
        }
        return last_ != Last::Other;
    }

  private:
    enum class Last { Other, Drawing, Text };

    void begin_text(const Record& record) {
        constexpr std::size_t kCharacters = 10, kRunBytes = 12, kLeast = 14;
        const bool has_counts = record.size() >= kLeast;
        characters_ = has_counts ? record.u16(kCharacters) : 0;
        run_bytes_ = has_counts && characters_ != 0 ? record.u16(kRunBytes) : 0;
    }

    void pass_text(const Record& record) {
        if (characters_ == 0) {
            run_bytes_ -= std::min(run_bytes_, record.size());
            return;
        }
        if (record.size() == 0) return;
        const std::size_t width = (record.u8(0) & 1) != 0 ? 2 : 1;
        characters_ -= std::min(characters_, (record.size() - 1) / width);
    }

    Last last_ = Last::Other;
    std::size_t characters_ = 0, run_bytes_ = 0; ///< of a text that are still to come
};

/// Damaged files have records that are longer than a record may be; they stay.
void append_record(std::uint16_t id, std::string_view data, std::string& out) {
    append_u16(out, id);
    append_u16(out, static_cast<std::uint16_t>(data.size()));
    out.append(data);
}

bool contains(std::initializer_list<std::uint16_t> ids, std::uint16_t id) {
    return std::find(ids.begin(), ids.end(), id) != ids.end();
}

bool stays_with_original(std::uint16_t id) {
    return contains({record::kDrawingSelection, record::kHeaderPicture, record::kPicture,
                     record::kCodeName, record::kWebPublishing, record::kTables, record::kTable11,
                     record::kTable12, record::kTableSettings, record::kTableContinue11,
                     record::kPivotChartLink, record::kPivotChartOptions},
                    id);
}

bool is_drawn(std::uint16_t id) {
    return contains({record::kDrawing, record::kObject, record::kTextObject, record::kNote}, id);
}

bool has_source(std::string_view object) {
    bool found = false;
    for_each_object_field(object, [&](const ObjectField& field) {
        found |= field.id == ObjectFieldId::PictureSource;
    });
    return found;
}

/// An object that shows what is kept elsewhere becomes a picture.
std::string without_source(std::string_view object) {
    std::string result;
    std::size_t done = 0;
    for_each_object_field(object, [&](const ObjectField& field) {
        if (field.id == ObjectFieldId::PictureSource) {
            result.append(object.substr(done, field.begin - done));
            done = field.end;
        } else if (field.id == ObjectFieldId::PictureOptions &&
                   field.end - field.begin >= ObjectField::kHeaderBytes + 2) {
            constexpr std::uint16_t kAspectRatio = 0x0001, kDefaultSize = 0x0100;
            const std::size_t options = field.begin + ObjectField::kHeaderBytes;
            const std::uint16_t old = load_u16(object.data() + options);
            result.append(object.substr(done, options - done));
            append_u16(result, static_cast<std::uint16_t>(old & (kAspectRatio | kDefaultSize)));
            done = options + 2;
        }
    });
    return result.append(object.substr(done));
}

class SheetCopier {
  public:
    SheetCopier(std::string_view stream, std::size_t position, const biff::TokenChanges& formulas,
                const SheetNameChanges& names)
        : stream_(stream), position_(position), formulas_(formulas), names_(names) {}

    std::string run(DrawingGroup& group) {
        find_drawings();
        has_drawings_ = enter_drawings(group);
        for (OpenDrawing& open : drawings_)
            open.records = {}; // for the second walk
        SubstreamWalk walk(stream_, position_);
        while (walk.next())
            write(walk);
        return std::move(out_);
    }

  private:
    struct OpenDrawing {
        Drawing drawing;
        DrawingRecords records;
        std::size_t written = 0;
    };

    OpenDrawing& drawing_of(std::size_t substream) {
        if (drawings_.size() <= substream) drawings_.resize(substream + 1);
        return drawings_[substream];
    }

    void find_drawings() {
        SubstreamWalk walk(stream_, position_);
        while (walk.next()) {
            const Record& record = walk.record();
            OpenDrawing& open = drawing_of(walk.substream());
            if (open.records.is_part(record)) open.drawing.data += record.data;
            if (record.id == record::kObject && has_source(record.data))
                open.drawing.pictures.push_back(open.drawing.data.size());
            has_tables_ |= record.id == record::kTable11 || record.id == record::kTable12;
        }
    }

    bool enter_drawings(DrawingGroup& group) {
        const bool has_any =
            std::any_of(drawings_.begin(), drawings_.end(),
                        [](const OpenDrawing& open) { return !open.drawing.data.empty(); });
        if (!has_any) return true;
        DrawingGroup with_copies = group;
        for (OpenDrawing& open : drawings_)
            if (!open.drawing.data.empty() && !with_copies.enter_copy(open.drawing)) return false;
        group = std::move(with_copies);
        return true;
    }

    void write(const SubstreamWalk& walk) {
        const Record& record = walk.record();
        OpenDrawing& open = drawing_of(walk.substream());
        const bool is_drawing = open.records.is_part(record);
        if (record.id == record::kCustomViewBegin) is_in_view_ = true;
        const bool is_view = is_in_view_;
        if (record.id == record::kCustomViewEnd) is_in_view_ = false;
        if (record.id != record::kContinue || is_drawing)
            is_dropped_ = is_view || is_left_out(record, walk, is_drawing);
        if (is_dropped_) return;
        if (is_drawing)
            write_drawing(record, open);
        else
            write_changed(record);
    }

    bool is_left_out(const Record& record, const SubstreamWalk& walk, bool is_drawing) const {
        const std::uint16_t id = record.id;
        if (has_tables_ &&
            contains({record::kAutoFilter12, record::kSortData, record::kContinue12}, id))
            return true; // those of tables look like those of the sheet
        if (stays_with_original(id)) return true;
        // What is drawn includes charts, which are substreams of the sheet.
        const bool is_chart = walk.substream() != 0;
        return !has_drawings_ && (is_drawing || is_drawn(id) || is_chart);
    }

    void write_drawing(const Record& record, OpenDrawing& open) {
        append_record(record.id,
                      std::string_view(open.drawing.data).substr(open.written, record.size()),
                      out_);
        open.written += record.size();
    }

    void write_changed(const Record& record) {
        data_.assign(record.data);
        rewrite_formulas(record.id, data_, formulas_);
        names_.apply(record.id, data_);
        if (record.id == record::kObject && has_source(data_)) data_ = without_source(data_);
        if (record.id == record::kWindow2 && data_.size() >= 2) {
            // One sheet is selected, not its copies.
            constexpr std::uint16_t kSelected = 0x0600;
            RecordWriter(data_).set_u16(
                0, static_cast<std::uint16_t>(load_u16(data_.data()) & ~kSelected));
        }
        append_record(record.id, data_, out_);
    }

    const std::string_view stream_;
    const std::size_t position_;
    const biff::TokenChanges& formulas_;
    const SheetNameChanges& names_;
    std::vector<OpenDrawing> drawings_; ///< by substream
    bool has_drawings_ = false, has_tables_ = false;
    std::string out_;
    std::string data_; ///< of a record that changes
    bool is_in_view_ = false;
    bool is_dropped_ = false; ///< the last record, with what continues it
};

} // namespace

std::string copied_sheet(std::string_view stream, std::size_t position,
                         const biff::TokenChanges& formulas, const SheetNameChanges& names,
                         DrawingGroup& drawings) {
    return SheetCopier(stream, position, formulas, names).run(drawings);
}

std::string sheet_with_names(std::string_view stream, std::size_t position,
                             const SheetNameChanges& names) {
    std::string out;
    bool has_changed = false;
    std::string data;
    SubstreamWalk walk(stream, position);
    while (walk.next()) {
        const Record& record = walk.record();
        data.assign(record.data);
        if (names.apply(record.id, data) && !has_changed) {
            has_changed = true;
            out = stream.substr(position, record.position - position);
        }
        if (has_changed) append_record(record.id, data, out);
    }
    return out;
}

} // namespace workbook
