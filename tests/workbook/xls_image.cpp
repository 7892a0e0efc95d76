// SPDX-License-Identifier: Apache-2.0
#include "tests/workbook/xls_image.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <sstream>

#include "foundation/files.h"
#include "foundation/unicode.h"
#include "workbook/cfb/compound_file.h"
#include "workbook/io/little_endian.h"
#include "workbook/xls/decryption.h"
#include "workbook/xls/formula/token_stream.h"
#include "workbook/xls/record_stream.h"

namespace workbook::test {

namespace {

using foundation::unicode::to_utf8;

/// Characters of one or two bytes, as UTF-8.
std::string characters(std::string_view bytes, std::size_t count, bool is_wide) {
    std::u16string text;
    for (std::size_t i = 0; i < count && (is_wide ? 2 * i + 1 : i) < bytes.size(); ++i)
        text += is_wide ? static_cast<char16_t>(load_u16(bytes.data() + 2 * i))
                        : static_cast<char16_t>(static_cast<unsigned char>(bytes[i]));
    return to_utf8(text);
}

struct Link {
    unsigned book, first, last;
};

struct Name {
    std::string text;
    unsigned scope; ///< number of the sheet, 0 for the book
    std::string_view formula;
    unsigned token_bytes;
};

class BookWalk {
  public:
    explicit BookWalk(std::string_view stream) : stream_(stream) {}

    BookImage run() {
        read_globals();
        for (std::size_t i = 0; i < positions_.size(); ++i)
            read_sheet(positions_[i], image_.sheets[i]);
        for (SheetImage& sheet : image_.sheets)
            sheet.others = without_dead_links(sheet.others);
        for (const Name& name : names_)
            if (!name.text.starts_with("_removed_"))
                image_.names.insert(
                    {scope_of(name), name.text, references(name.formula, name.token_bytes)});
        check_drawings();
        return std::move(image_);
    }

  private:
    void fault(const std::string& what, std::size_t position = 0) {
        image_.faults.insert(what + " at " + std::to_string(position));
    }

    void read_globals() {
        std::string links;
        std::size_t tab_ids = 0;
        std::uint16_t last = 0;
        RecordStream records(stream_, 0);
        while (records.next() && records.record().id != 0x0A) {
            const Record& record = records.record();
            if (record.id != 0x3C) last = record.id;
            if (last == 0x17) links += record.data;
            if (last == 0xEB) group_ += record.data;
            if (record.id == 0x013D) tab_ids = record.size() / 2;
            if (record.id == 0x85) {
                positions_.push_back(record.u32(0));
                image_.sheets.push_back(
                    {characters(record.data.substr(8), record.u8(6), (record.u8(7) & 1) != 0),
                     static_cast<SheetState>(record.u8(4) & 3)});
            } else if (record.id == 0x01AE) {
                if (record.size() == 4 && record.u16(2) == 0x0401) own_book_ = books_;
                ++books_;
            } else if (record.id == 0x18) {
                const bool is_wide = (record.u8(14) & 1) != 0;
                const std::size_t bytes = record.u8(3) * (is_wide ? 2u : 1u);
                names_.push_back({characters(record.data.substr(15), record.u8(3), is_wide),
                                  record.u16(8), record.data.substr(15 + bytes), record.u16(4)});
            }
        }
        if (tab_ids != 0 && tab_ids != positions_.size()) fault("numbers of sheets");
        for (std::size_t at = 2; at + 6 <= links.size(); at += 6)
            links_.push_back(
                {load_u16(&links[at]), load_u16(&links[at + 2]), load_u16(&links[at + 4])});
        if (!links.empty() && links_.size() != load_u16(links.data())) fault("links");
    }

    References without_dead_links(const References& all) const {
        References result;
        for (const std::string& one : all) {
            const bool is_dead =
                one.starts_with("l:") &&
                std::none_of(image_.sheets.begin(), image_.sheets.end(),
                             [&](const SheetImage& sheet) { return one.substr(2) == sheet.name; });
            result.insert(is_dead ? "l:#REF!" : one);
        }
        return result;
    }

    std::string scope_of(const Name& name) {
        if (name.scope == 0) return "";
        if (name.scope <= image_.sheets.size()) return image_.sheets[name.scope - 1].name;
        fault("scope");
        return "?";
    }

    std::string sheet_reference(unsigned entry) const {
        if (entry >= links_.size()) return "s:?";
        const Link& link = links_[entry];
        if (link.book != own_book_) return "x:" + std::to_string(link.book);
        if (link.first != link.last) return "span";
        return "s:" +
               (link.first < image_.sheets.size() ? image_.sheets[link.first].name : "#REF!");
    }

    std::string name_reference(unsigned number) {
        if (number == 0 || number > names_.size()) return "n:?";
        const Name& name = names_[number - 1];
        if (name.text.starts_with("_removed_")) return "n:#REF!";
        return "n:" + scope_of(name) + "!" + name.text;
    }

    References references(std::string_view formula, std::size_t token_bytes) {
        using biff::TokenId;
        References found;
        const auto tokens = biff::parse_tokens(formula, token_bytes);
        if (!tokens) fault("formula");
        if (!tokens) return found;
        for (const biff::FormulaToken& token : *tokens) {
            const char* const body = formula.data() + token.body;
            const TokenId id = token.id();
            if (id == TokenId::Reference3d || id == TokenId::Area3d)
                found.insert(sheet_reference(load_u16(body)));
            if (id == TokenId::ReferenceError3d || id == TokenId::AreaError3d)
                found.insert("s:#REF!");
            if (id == TokenId::Name) found.insert(name_reference(load_u16(body)));
            if (id == TokenId::ExternalName && load_u16(body) < links_.size() &&
                links_[load_u16(body)].book == own_book_)
                found.insert(name_reference(load_u16(body + 2)));
        }
        return found;
    }

    // --- Sheets

    void read_sheet(std::size_t position, SheetImage& sheet) {
        std::map<std::pair<int, int>, References> groups;
        std::map<std::pair<int, int>, std::pair<int, int>> members;
        std::pair<int, int> last{};
        std::vector<std::string> drawings;
        std::uint32_t end_row = 0xFFFF;
        int depth = 0;
        RecordStream records(stream_, position);
        while (records.next()) {
            const Record& record = records.record();
            if (record.id == 0x0809) {
                if (depth++ > 0) ++sheet.objects["charts"];
                drawings.emplace_back();
            } else if (depth == 0) {
                fault("sheet", position);
                return;
            }
            switch (record.id) {
            case 0x0200:
                end_row = record.u32(4);
                break;
            case 0x06: {
                last = {record.u16(0), record.u16(2)};
                const auto group = std::pair<int, int>(record.u16(23), record.u16(25));
                if (record.u8(22) == 1)
                    members[last] = group;
                else
                    note(sheet, last, references(record.data.substr(22), record.u16(20)));
                break;
            }
            case 0x04BC:
                groups[last] = references(record.data.substr(10), record.u16(8));
                break;
            case 0x0221:
                groups[last] = references(record.data.substr(14), record.u16(12));
                break;
            case 0x1051:
                sheet.others.merge(references(record.data.substr(8), record.u16(6)));
                break;
            case 0x01B8:
                read_hyperlink(record, sheet);
                break;
            case 0x1C:
                ++sheet.objects["comments"];
                break;
            case 0x5D:
                ++sheet.objects["objects"];
                break;
            case 0xEC:
                drawings.back() += record.data;
                break;
            case 0x020B:
                check_index(record);
                break;
            case 0x0A:
                --depth;
                break;
            default:
                break;
            }
            if (depth == 1 && record.id >= 0x0203 && record.id <= 0x0205 &&
                record.u16(0) >= end_row)
                fault("used range", position);
            if (depth == 0) break;
        }
        for (const auto& [place, group] : members)
            note(sheet, place, groups[group]);
        for (const std::string& drawing : drawings)
            if (!drawing.empty()) sheet.objects["shapes"] += read_drawing(drawing);
    }

    static void note(SheetImage& sheet, std::pair<int, int> place, References found) {
        if (!found.empty()) sheet.formulas[place] = std::move(found);
    }

    static void read_hyperlink(const Record& record, SheetImage& sheet) {
        if (record.size() < 36 || (record.u32(28) & 0x09) != 0x08) return; // within this book
        std::size_t at = 32;
        if ((record.u32(28) & 0x10) != 0) at += 4 + 2 * record.u32(at);
        std::string place = characters(record.data.substr(at + 4), record.u32(at) - 1, true);
        const std::size_t mark = place.rfind('!');
        if (mark == place.npos) return;
        place.resize(mark);
        if (place.starts_with('\'')) place = place.substr(1, place.size() - 2);
        for (std::size_t i = place.find("''"); i != place.npos; i = place.find("''", i + 1))
            place.erase(i, 1);
        sheet.others.insert("l:" + place);
    }

    std::optional<Record> record_at(std::size_t position, std::uint16_t id) {
        RecordStream records(stream_, position);
        if (position == 0 || !records.next() || records.record().id != id) return {};
        return records.record();
    }

    /// MS-XLS 2.4.144 Index, 2.4.80 DBCell.
    void check_index(const Record& index) {
        for (std::size_t at = 16; at + 4 <= index.size(); at += 4) {
            const std::size_t position = index.u32(at);
            if (position == 0) continue; // without rows
            const auto block = record_at(position, 0xD7);
            if (!block) return fault("index", index.position);
            RecordStream records(stream_, position - block->u32(0));
            std::vector<int> rows;
            std::map<std::size_t, int> cells; ///< rows of cells by their position
            std::set<int> filled;
            while (records.next() && records.record().position < position) {
                const Record& record = records.record();
                if (record.id == 0x0208) rows.push_back(record.u16(0));
                if (record.id == 0x0208 || record.size() < 6) continue;
                cells[record.position] = record.u16(0);
                filled.insert(record.u16(0));
            }
            std::size_t expected = position - block->u32(0) + 20;
            if (4 + 2 * rows.size() != block->size()) return fault("rows of block", position);
            for (std::size_t i = 0; i < rows.size(); ++i) {
                expected += block->u16(4 + 2 * i);
                if (filled.contains(rows[i]) && cells[expected] != rows[i])
                    fault("cells of row " + std::to_string(rows[i]), position);
            }
        }
    }

    // --- Drawings (MS-ODRAW)

    static void walk_art(std::string_view data,
                         const std::function<void(unsigned, unsigned, std::string_view)>& visit) {
        while (data.size() >= 8) {
            const unsigned start = load_u16(data.data());
            const std::size_t size = load_u32(data.data() + 4);
            const std::string_view body = data.substr(8, size);
            visit(load_u16(data.data() + 2), start >> 4, body);
            if ((start & 0xF) == 0xF) walk_art(body, visit);
            data.remove_prefix(std::min(data.size(), 8 + size));
        }
    }

    int read_drawing(std::string_view data) {
        unsigned drawing = 0, claimed = 0;
        std::vector<unsigned> shapes, joined;
        walk_art(data, [&](unsigned type, unsigned instance, std::string_view body) {
            if (type == 0xF008) {
                drawing = instance;
                claimed = load_u32(body.data());
            }
            if (type == 0xF00A) shapes.push_back(load_u32(body.data()));
            if (type == 0xF012) // a connector follows the shapes that it joins
                for (const std::size_t at : {4, 8, 12})
                    joined.push_back(load_u32(&body[at]));
            if (type == 0xF00B)
                for (unsigned i = 0; i < instance; ++i)
                    if ((load_u16(&body[6 * i]) & 0x4000) != 0) ++uses_[load_u32(&body[6 * i + 2])];
        });
        if (claimed != shapes.size()) fault("count of shapes");
        for (const unsigned shape : shapes)
            if (!shapes_.try_emplace(shape, drawing).second)
                fault("shape " + std::to_string(shape) + " twice");
        for (const unsigned shape : joined)
            if (shape != 0 && std::find(shapes.begin(), shapes.end(), shape) == shapes.end())
                fault("joined shape");
        if (!drawings_.insert(drawing).second) fault("drawing twice");
        return static_cast<int>(shapes.size());
    }

    void check_drawings() {
        std::vector<std::pair<unsigned, unsigned>> clusters;
        unsigned highest = 0;
        unsigned pictures = 0;
        walk_art(group_, [&](unsigned type, unsigned, std::string_view body) {
            if (type == 0xF007 && load_u32(&body[24]) < uses_[++pictures]) fault("use of picture");
            if (type != 0xF006) return;
            highest = load_u32(body.data());
            for (unsigned i = 1; i < load_u32(body.data() + 4); ++i)
                clusters.emplace_back(load_u32(body.data() + 8 + 8 * i),
                                      load_u32(body.data() + 12 + 8 * i));
        });
        for (const auto& [shape, drawing] : shapes_) {
            const std::size_t cluster = shape >> 10;
            if (cluster == 0 || cluster > clusters.size() ||
                clusters[cluster - 1].first != drawing || shape > highest ||
                (shape & 0x3FF) > clusters[cluster - 1].second)
                fault("cluster of shape " + std::to_string(shape));
        }
    }

    std::string_view stream_;
    BookImage image_;
    std::vector<std::size_t> positions_;
    std::vector<Link> links_;
    std::vector<Name> names_;
    unsigned books_ = 0, own_book_ = 0xFFFF;
    std::string group_;
    std::map<unsigned, unsigned> shapes_; ///< drawing by number of the shape
    std::set<unsigned> drawings_;
    std::map<unsigned, unsigned> uses_; ///< of pictures
};

void read_cells(Book& book, BookImage& image) {
    for (int i = 0; i < book.sheet_count(); ++i) {
        const Sheet* const sheet = book.get_sheet(i);
        if (sheet == nullptr) continue;
        SheetImage& one = image.sheets[static_cast<std::size_t>(i)];
        for (int row = sheet->first_row(); row < sheet->end_row(); ++row)
            for (int column = sheet->first_column(); column < sheet->end_column(); ++column) {
                const CellKind kind = sheet->cell_type(row, column);
                if (kind == CellKind::Empty) continue;
                one.cells[{row, column}] = {kind, sheet->read_num(row, column),
                                            std::u16string(sheet->read_str(row, column)),
                                            sheet->cell_format(row, column)->num_format()};
            }
        for (int k = 0; k < sheet->merge_size(); ++k) {
            int a, b, c, d;
            sheet->merge(k, a, b, c, d);
            std::ostringstream text;
            text << a << ' ' << b << ' ' << c << ' ' << d;
            one.merged.push_back(text.str());
        }
    }
}

References replaced(const References& all, const std::string& sheet, const std::string& other) {
    References result;
    for (const std::string& one : all) {
        const bool is_gone = other == "#REF!";
        if (one == "s:" + sheet)
            result.insert("s:" + other);
        else if (one.starts_with("n:" + sheet + "!"))
            result.insert(is_gone ? "n:#REF!" : "n:" + other + one.substr(2 + sheet.size()));
        else if (one == "l:" + sheet)
            result.insert("l:" + other);
        else
            result.insert(one);
    }
    return result;
}

void replace(SheetImage& image, const std::string& sheet, const std::string& other) {
    image.others = replaced(image.others, sheet, other);
    for (auto& [place, found] : image.formulas)
        found = replaced(found, sheet, other);
}

} // namespace

void BookImage::rename_sheet(std::size_t index, const std::string& name) {
    const std::string old = std::exchange(sheets[index].name, name);
    for (SheetImage& sheet : sheets)
        replace(sheet, old, name);
    std::multiset<NameImage> now;
    for (const NameImage& one : names)
        now.insert(
            {one.scope == old ? name : one.scope, one.name, replaced(one.refers_to, old, name)});
    names = now;
}

void BookImage::remove_sheet(std::size_t index) {
    const std::string gone = sheets[index].name;
    sheets.erase(sheets.begin() + static_cast<std::ptrdiff_t>(index));
    for (SheetImage& sheet : sheets)
        replace(sheet, gone, "#REF!");
    std::multiset<NameImage> now;
    for (const NameImage& one : names)
        if (one.scope != gone)
            now.insert({one.scope, one.name, replaced(one.refers_to, gone, "#REF!")});
    names = now;
}

void BookImage::copy_sheet(std::size_t source, std::size_t index, const std::string& name) {
    SheetImage copy = sheets[source];
    replace(copy, copy.name, name);
    for (const NameImage& one : std::multiset<NameImage>(names))
        if (one.scope == copy.name)
            names.insert({name, one.name, replaced(one.refers_to, copy.name, name)});
    copy.name = name;
    copy.state = SheetState::Visible;
    sheets.insert(sheets.begin() + static_cast<std::ptrdiff_t>(index), std::move(copy));
}

std::string stream_of(const std::string& file) {
    if (!CompoundFile::has_signature(file)) return file;
    CompoundFile container(foundation::files::memory_file(file));
    const CompoundEntry* entry = container.find_stream(u"Workbook");
    if (entry == nullptr) entry = container.find_stream(u"Book");
    std::string stream = container.read_stream(*entry);
    decrypt_workbook_stream(stream);
    return stream;
}

BookImage image_of(const std::string& file) {
    BookImage image = BookWalk(stream_of(file)).run();
    const auto book = xlCreateBookW();
    if (!book->load(foundation::files::memory_file(file)))
        image.faults.insert(book->error_message());
    else
        read_cells(*book, image);
    return image;
}

std::string difference(const BookImage& a, const BookImage& b) {
    std::ostringstream out;
    if (a.sheets.size() != b.sheets.size()) return "count of sheets";
    const auto text = [](const References& all) {
        std::string line = "{";
        for (const std::string& one : all)
            line += one + " ";
        return line + "}";
    };
    for (std::size_t i = 0; i < a.sheets.size(); ++i) {
        const SheetImage &x = a.sheets[i], &y = b.sheets[i];
        if (x == y) continue;
        out << "sheet " << x.name << "/" << y.name << ": ";
        if (x.state != y.state) out << "state ";
        if (x.merged != y.merged) out << "merged " << x.merged.size() << "/" << y.merged.size();
        if (x.others != y.others) out << text(x.others) << text(y.others);
        for (const auto& [what, count] : x.objects)
            if (!y.objects.contains(what) || y.objects.at(what) != count) out << what << " ";
        for (const auto* one : {&x, &y})
            for (const auto& [place, cell] : one->cells) {
                const auto* other = one == &x ? &y : &x;
                if (other->cells.contains(place) && other->cells.at(place) == cell) continue;
                out << " cell " << place.first << "," << place.second << " of " << (one == &y)
                    << " kind " << static_cast<int>(cell.kind) << " " << cell.number << " "
                    << cell.num_format << " " << to_utf8(cell.text);
                if (other->cells.contains(place))
                    out << ", other format " << other->cells.at(place).num_format;
                return out.str();
            }
        for (const auto* one : {&x, &y})
            for (const auto& [place, found] : one->formulas) {
                const auto* other = one == &x ? &y : &x;
                if (other->formulas.contains(place) && other->formulas.at(place) == found) continue;
                out << " formula " << place.first << "," << place.second << text(found);
                return out.str();
            }
        return out.str();
    }
    if (a.names == b.names) return {};
    for (const auto* names : {&a.names, &b.names})
        for (const NameImage& one : *names)
            if (a.names.count(one) != b.names.count(one))
                out << "name " << one.scope << "!" << one.name << text(one.refers_to);
    return out.str();
}

} // namespace workbook::test
