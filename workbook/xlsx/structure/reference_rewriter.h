// SPDX-License-Identifier: Apache-2.0
//
// A part's text with the references in it brought up to date while it is read; everything else
// passes byte for byte (as UTF-8). Mark-up is not checked: drawings in VML need not be well-formed.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "workbook/io/byte_source.h"
#include "workbook/xlsx/structure/reference_places_table.h"
#include "workbook/xml/text_window.h"

namespace workbook {

/// What is done to parts. Functions return nullopt for what stays as it is.
struct PartEdits {
    std::function<std::optional<std::string>(std::string_view formula)> formula;
    std::function<std::optional<std::string>(std::string_view name)> sheet_name;
    bool clears_tab_selected = false; ///< sheetView/@tabSelected goes
    /// What cannot be there twice goes: sheetPr/@codeName, lists of slicers and timelines.
    bool is_sheet_copy = false;
};

/// What the value of a place becomes; nothing when it stays.
std::optional<std::string> edited_value(const PartEdits& edits, PlaceHolds holds,
                                        std::string_view value);

class ReferenceRewriter final : public ByteSource {
  public:
    /// `edits` may be shared by the sources of many parts.
    ReferenceRewriter(std::unique_ptr<ByteSource> part, std::shared_ptr<const PartEdits> edits);
    ~ReferenceRewriter() override;

    std::size_t read(char* buffer, std::size_t capacity) override;
    const std::string& part_name() const override { return part_->part_name(); }

    /// Whether anything of what was read so far differs from the part.
    bool has_changed() const { return has_changed_; }

  private:
    /// A piece of the part: text up to the next '<' or the window's end, or one whole tag.
    struct Piece {
        enum Kind { End, Text, StartTag, EndTag, CData, Other } kind;
        std::string_view text;
    };

    bool pass_plain();
    Piece peek();
    Piece cut(Piece::Kind kind, std::size_t bytes) const;
    Piece cut_through(Piece::Kind kind, std::string_view end);
    Piece cut_start_tag();
    void drop(const Piece& piece);
    void pass(const Piece& piece);
    void step();
    void put_declaration(std::string_view declaration);
    void put_start_tag(std::string_view tag);
    void put_attributes(std::string_view tag, std::string_view element);
    void put_text(const ReferencePlace& place);
    bool drops_attribute(std::string_view element, std::string_view attribute) const;
    void skip_extension();

    std::unique_ptr<ByteSource> part_;
    std::shared_ptr<const PartEdits> edits_;
    TextWindow window_;
    std::string out_;
    std::size_t out_used_ = 0;
    bool is_in_pivot_source_ = false; ///< the last start tag was that of a pivotSource
    bool is_done_ = false;
    bool has_changed_ = false;
};

/// Whether these edits change anything in a part; reads as far as the first change.
bool would_change(std::unique_ptr<ByteSource> part, std::shared_ptr<const PartEdits> edits);

} // namespace workbook
