// SPDX-License-Identifier: Apache-2.0
//
// Pieces of the part go from the window to the output; only tags that the table of places knows are
// looked into.
#include "workbook/xlsx/structure/reference_rewriter.h"

#include <algorithm>
#include <cstring>

#include "foundation/ascii_case.h"
#include "workbook/opc/internal_link.h"
#include "workbook/xml/character_data.h"
#include "workbook/xml/find_byte.h"
#include "workbook/xml/raw_tag.h"
#include "workbook/xml/simple_types.h"

namespace workbook {

namespace {

constexpr std::size_t kOutputBytes = 32u << 10;
/// Enough text to recognise every kind of tag.
constexpr std::size_t kLongestOpening = 16;

/// Extensions of worksheets that lead to slicers and timelines (MS-XLSX 2.2.3.1 and 2.2.3.2): each
/// of those is on one sheet only.
constexpr std::string_view kSingleExtensions[] = {
    "{A8765BA9-456A-4dab-B4F3-ACF838C121DE}", // x14:slicerList
    "{3A4CF648-6AED-40f4-86FF-DC5316D8AED3}", // x15:slicerList, of tables
    "{7E03D99C-DC04-49d9-9315-930204A7B6E9}", // x15:timelineRefs
};

bool is_single_extension(std::string_view tag) {
    for (RawAttributes attributes(tag); attributes.next();)
        if (attributes.local_name() == "uri")
            return std::any_of(std::begin(kSingleExtensions), std::end(kSingleExtensions),
                               [&](std::string_view uri) {
                                   return foundation::unicode::equal_ignoring_ascii_case(
                                       uri, attributes.raw_value());
                               });
    return false;
}

bool has_attribute(std::string_view tag, std::string_view name) {
    for (RawAttributes attributes(tag); attributes.next();)
        if (attributes.local_name() == name) return true;
    return false;
}

/// Whether the tag at `p` is an end tag or the start tag of an element that always passes.
bool is_plain_start_or_end(const char* p, const char* end) {
    if (end - p < 2 || p[1] == '!' || p[1] == '?') return false;
    if (p[1] == '/') return true;
    const char* name = ++p;
    for (; p != end && *p != '>' && *p != '/' && !is_space(*p); ++p)
        if (*p == ':') name = p + 1;
    if (p == end) return false;
    const std::string_view element(name, static_cast<std::size_t>(p - name));
    return !may_have_places(element) && element != "ext" && element != "sheetView" &&
           element != "sheetPr" && element != "pivotSource";
}

/// After the '>' of the tag at `p`; null when it is not in the text.
const char* find_tag_end(const char* p, const char* end) {
    if (p[1] == '/') {
        p = find_byte(p, end, '>');
        return p == end ? nullptr : p + 1;
    }
    for (char quote = 0; p != end; ++p) {
        if (quote != 0)
            quote = *p == quote ? '\0' : quote;
        else if (*p == '>')
            return p + 1;
        else if (*p == '"' || *p == '\'')
            quote = *p;
    }
    return nullptr;
}

bool is_empty_element(std::string_view tag) {
    return tag.ends_with("/>");
}

/// The formula with or without an equals sign before it.
std::optional<std::string> edited_formula(const PartEdits& edits, std::string_view value) {
    if (!value.starts_with('=')) return edits.formula(value);
    std::optional<std::string> edited = edits.formula(value.substr(1));
    if (edited) edited->insert(0, 1, '=');
    return edited;
}

/// "[Book.xlsx]Sheet!PivotTable1": neither name has quotes.
std::optional<std::string> edited_pivot_name(const PartEdits& edits, std::string_view value) {
    const std::size_t bracket = value.starts_with('[') ? value.find(']') : std::string_view::npos;
    const std::size_t bang = value.rfind('!');
    if (bracket == std::string_view::npos || bang == std::string_view::npos || bang < bracket)
        return {};
    const std::optional<std::string> sheet =
        edits.sheet_name(value.substr(bracket + 1, bang - bracket - 1));
    if (!sheet) return {};
    std::string edited(value.substr(0, bracket + 1));
    return edited.append(*sheet).append(value.substr(bang));
}

} // namespace

std::optional<std::string> edited_value(const PartEdits& edits, PlaceHolds holds,
                                        std::string_view value) {
    switch (holds) {
    case PlaceHolds::Formula:
        return edits.formula ? edited_formula(edits, value) : std::nullopt;
    case PlaceHolds::SheetName:
        return edits.sheet_name ? edits.sheet_name(value) : std::nullopt;
    case PlaceHolds::PivotName:
        return edits.sheet_name ? edited_pivot_name(edits, value) : std::nullopt;
    case PlaceHolds::Fragment:
        return edits.formula ? edited_fragment(value, edits.formula) : std::nullopt;
    }
    return {};
}

ReferenceRewriter::ReferenceRewriter(std::unique_ptr<ByteSource> part,
                                     std::shared_ptr<const PartEdits> edits)
    : part_(std::move(part)), edits_(std::move(edits)), window_(*part_) {}

ReferenceRewriter::~ReferenceRewriter() = default;

std::size_t ReferenceRewriter::read(char* buffer, std::size_t capacity) {
    if (out_used_ == out_.size()) {
        out_.clear();
        out_used_ = 0;
        while (!is_done_ && out_.size() < kOutputBytes)
            step();
    }
    const std::size_t count = std::min(capacity, out_.size() - out_used_);
    std::memcpy(buffer, out_.data() + out_used_, count);
    out_used_ += count;
    return count;
}

/// Passes what the window holds up to the next tag that is looked into, or that the window's end
/// cuts off. False when there is none of it.
bool ReferenceRewriter::pass_plain() {
    const char* const begin = window_.cursor();
    const char* const end = window_.end();
    const char* p = begin;
    for (;;) {
        p = find_byte(p, end, '<');
        if (p == end || !is_plain_start_or_end(p, end)) break;
        const char* const after = find_tag_end(p, end);
        if (after == nullptr) break;
        if (p[1] != '/') is_in_pivot_source_ = false;
        p = after;
    }
    out_.append(begin, p);
    window_.set_cursor(p);
    return p != begin;
}

void ReferenceRewriter::step() {
    if (pass_plain()) return;
    const Piece piece = peek();
    if (piece.kind == Piece::End) {
        is_done_ = true;
    } else if (piece.kind == Piece::StartTag) {
        put_start_tag(piece.text);
    } else if (piece.text.starts_with("<?xml") && window_.position(window_.cursor()) <= 3) {
        put_declaration(piece.text);
        drop(piece);
    } else {
        pass(piece);
    }
}

ReferenceRewriter::Piece ReferenceRewriter::cut(Piece::Kind kind, std::size_t bytes) const {
    return {kind, {window_.cursor(), bytes}};
}

/// Up to and with the first `end`; to the part's end when there is none.
ReferenceRewriter::Piece ReferenceRewriter::cut_through(Piece::Kind kind, std::string_view end) {
    for (std::size_t from = 0;;) {
        const std::string_view unread(window_.cursor(),
                                      static_cast<std::size_t>(window_.end() - window_.cursor()));
        const std::size_t at = unread.find(end, from);
        if (at != std::string_view::npos) return cut(kind, at + end.size());
        from = unread.size() - std::min(unread.size(), end.size() - 1);
        if (!window_.refill())
            return cut(Piece::Other, static_cast<std::size_t>(window_.end() - window_.cursor()));
    }
}

ReferenceRewriter::Piece ReferenceRewriter::cut_start_tag() {
    char quote = 0;
    for (std::size_t i = 1;; ++i) {
        if (window_.cursor() + i == window_.end() && !window_.refill()) return cut(Piece::Other, i);
        const char c = window_.cursor()[i];
        if (quote != 0)
            quote = c == quote ? '\0' : quote;
        else if (c == '"' || c == '\'')
            quote = c;
        else if (c == '>')
            return cut(Piece::StartTag, i + 1);
    }
}

ReferenceRewriter::Piece ReferenceRewriter::peek() {
    while (static_cast<std::size_t>(window_.end() - window_.cursor()) < kLongestOpening &&
           window_.refill()) {
    }
    const std::string_view unread(window_.cursor(),
                                  static_cast<std::size_t>(window_.end() - window_.cursor()));
    if (unread.empty()) return {Piece::End, {}};
    if (unread.front() != '<') return cut(Piece::Text, std::min(unread.find('<'), unread.size()));
    if (unread.starts_with("</")) return cut_through(Piece::EndTag, ">");
    if (unread.starts_with("<!--")) return cut_through(Piece::Other, "-->");
    if (unread.starts_with("<![CDATA[")) return cut_through(Piece::CData, "]]>");
    if (unread.starts_with("<?")) return cut_through(Piece::Other, "?>");
    if (unread.starts_with("<!")) return cut_through(Piece::Other, ">");
    return cut_start_tag();
}

void ReferenceRewriter::drop(const Piece& piece) {
    window_.set_cursor(piece.text.data() + piece.text.size());
}

void ReferenceRewriter::pass(const Piece& piece) {
    out_ += piece.text;
    drop(piece);
}

/// What comes out is UTF-8, whatever the part was.
void ReferenceRewriter::put_declaration(std::string_view declaration) {
    for (RawAttributes attributes(declaration.substr(1)); attributes.next();) {
        if (attributes.local_name() != "encoding") continue;
        const auto begin =
            static_cast<std::size_t>(attributes.raw_value().data() - declaration.data());
        if (!foundation::unicode::equal_ignoring_ascii_case(attributes.raw_value(), "UTF-8")) {
            out_ += declaration.substr(0, begin);
            out_ += "UTF-8";
            declaration.remove_prefix(begin + attributes.raw_value().size());
        }
        break;
    }
    out_ += declaration;
}

void ReferenceRewriter::put_start_tag(std::string_view tag) {
    const std::string element(raw_tag_name(tag));
    const bool is_empty = is_empty_element(tag);
    const std::span<const ReferencePlace> places = reference_places(element);
    if (edits_->is_sheet_copy && element == "ext" && is_single_extension(tag)) {
        skip_extension();
        return;
    }
    const ReferencePlace* text_place = nullptr;
    for (const ReferencePlace& place : places)
        if (place.attribute.empty() && !is_empty &&
            (place.holds != PlaceHolds::PivotName || is_in_pivot_source_))
            text_place = &place;
    const bool is_sheet_mark_up = element == "sheetView" || element == "sheetPr";
    if (places.empty() && !is_sheet_mark_up)
        out_ += tag;
    else
        put_attributes(tag, element);
    window_.set_cursor(tag.data() + tag.size());
    is_in_pivot_source_ = element == "pivotSource";
    if (text_place != nullptr) put_text(*text_place);
}

bool ReferenceRewriter::drops_attribute(std::string_view element,
                                        std::string_view attribute) const {
    if (element == "sheetView") return edits_->clears_tab_selected && attribute == "tabSelected";
    return edits_->is_sheet_copy && element == "sheetPr" && attribute == "codeName";
}

void ReferenceRewriter::put_attributes(std::string_view tag, std::string_view element) {
    const char* copied = tag.data();
    const auto copy_to = [&](const char* end) {
        out_.append(copied, end);
        copied = end;
    };
    for (RawAttributes attributes(tag); attributes.next();) {
        if (drops_attribute(element, attributes.local_name())) {
            copy_to(attributes.whole().data());
            copied += attributes.whole().size();
            has_changed_ = true;
            continue;
        }
        for (const ReferencePlace& place : reference_places(element)) {
            std::string value;
            if (place.attribute.empty() || place.attribute != attributes.local_name() ||
                (!place.other_book.empty() && has_attribute(tag, place.other_book)) ||
                !append_decoded(value, attributes.raw_value()))
                continue;
            const std::optional<std::string> edited = edited_value(*edits_, place.holds, value);
            if (!edited) continue;
            copy_to(attributes.raw_value().data() - 1);
            out_.append(1, '"').append(escaped_xml(*edited, true)).append(1, '"');
            copied += attributes.raw_value().size() + 2;
            has_changed_ = true;
        }
    }
    copy_to(tag.data() + tag.size());
}

/// The text of the element whose start tag was taken, unless it has elements within.
void ReferenceRewriter::put_text(const ReferencePlace& place) {
    std::string raw, run, value;
    bool is_text = true;
    const auto end_run = [&] {
        is_text = is_text && append_decoded(value, run);
        run.clear();
    };
    for (;;) {
        const Piece piece = peek();
        if (piece.kind != Piece::Text) end_run();
        if (piece.kind == Piece::EndTag) break;
        if (piece.kind == Piece::StartTag || piece.kind == Piece::End) {
            is_text = false;
            break;
        }
        raw += piece.text;
        if (piece.kind == Piece::Text) run += piece.text;
        if (piece.kind == Piece::CData) value += piece.text.substr(9, piece.text.size() - 12);
        drop(piece);
    }
    const std::optional<std::string> edited =
        is_text ? edited_value(*edits_, place.holds, value) : std::nullopt;
    out_ += edited ? escaped_xml(*edited, false) : raw;
    has_changed_ = has_changed_ || edited.has_value();
}

/// Leaves out the element whose start tag is next.
void ReferenceRewriter::skip_extension() {
    has_changed_ = true;
    std::size_t depth = 0;
    do {
        const Piece piece = peek();
        if (piece.kind == Piece::End) return;
        const bool is_extension = (piece.kind == Piece::StartTag || piece.kind == Piece::EndTag) &&
                                  raw_tag_name(piece.text) == "ext";
        if (is_extension && piece.kind == Piece::EndTag) --depth;
        if (is_extension && piece.kind == Piece::StartTag && !is_empty_element(piece.text)) ++depth;
        drop(piece);
    } while (depth > 0);
}

bool would_change(std::unique_ptr<ByteSource> part, std::shared_ptr<const PartEdits> edits) {
    ReferenceRewriter rewriter(std::move(part), std::move(edits));
    std::string piece(kOutputBytes, '\0');
    while (!rewriter.has_changed() && rewriter.read(piece.data(), piece.size()) > 0) {
    }
    return rewriter.has_changed();
}

} // namespace workbook
