// SPDX-License-Identifier: Apache-2.0
//
// Random changes to cells and sheets, over a book made here and over those of the collection: what
// is saved is what the book's image says, and fits together.
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <sstream>

#include <gtest/gtest.h>

#include "foundation/output_file.h"
#include "foundation/unicode.h"
#include "tests/workbook/xls_image.h"
#include "tests/workbook/xls_stream.h"
#include "workbook/library.h"

namespace workbook::test {
namespace {

namespace files = foundation::files;
using foundation::unicode::to_utf16;

std::string saved(Book& book) {
    std::string bytes;
    EXPECT_TRUE(book.save(*files::memory_output(bytes), u"xls")) << book.error_message();
    return bytes;
}

std::unique_ptr<Book> loaded(const std::string& bytes) {
    std::unique_ptr<Book> book = xlCreateBookW();
    EXPECT_TRUE(book->load(files::memory_file(bytes))) << book->error_message();
    return book;
}

class RandomChanges {
  public:
    RandomChanges(const std::string& file, unsigned seed)
        : random_(seed), book_(loaded(file)), image_(image_of(file)) {
        date_ = book_->add_format();
        date_->set_num_format(22);
    }

    void step() {
        const int choice = below(24);
        const std::size_t at = static_cast<std::size_t>(below(book_->sheet_count()));
        if (choice < 6)
            change_sheets(at, choice);
        else if (Sheet* const sheet = book_->get_sheet(static_cast<int>(at)))
            change_cells(*sheet, image_.sheets[at], choice);
    }

    void check() {
        const BookImage found = image_of(saved(*book_));
        ASSERT_EQ(difference(image_, found), "") << done_.str();
        if (image_.faults.empty()) {
            ASSERT_EQ(found.faults, std::set<std::string>{}) << done_.str();
        }
    }

    void reload() {
        book_ = loaded(saved(*book_));
        date_ = book_->add_format();
        date_->set_num_format(22);
        done_ << "reload\n";
    }

  private:
    int below(int end) { return static_cast<int>(random_() % static_cast<unsigned>(end)); }

    void change_sheets(std::size_t at, int choice) {
        const int index = static_cast<int>(at);
        const std::string name = "It's " + std::to_string(++names_);
        const int to = below(book_->sheet_count() + (choice < 3 ? 1 : 0));
        const auto target = static_cast<std::size_t>(to);
        Sheet* const sheet = book_->get_sheet(index);
        done_ << "sheets " << choice << ": " << image_.sheets[at].name << " " << to << "\n";
        if (choice == 0) {
            ASSERT_TRUE(book_->insert_sheet(to, to_utf16(name), nullptr));
            image_.sheets.insert(image_.sheets.begin() + to, SheetImage{name});
        } else if (choice < 3 && sheet != nullptr) {
            ASSERT_TRUE(book_->insert_sheet(to, to_utf16(name), sheet)) << book_->error_message();
            image_.copy_sheet(at, target, name);
        } else if (choice == 3) {
            ASSERT_TRUE(book_->move_sheet(index, to));
            SheetImage moved = std::move(image_.sheets[at]);
            image_.sheets.erase(image_.sheets.begin() + index);
            image_.sheets.insert(image_.sheets.begin() + to, std::move(moved));
        } else if (choice == 4 && sheet != nullptr && sheet->set_name(to_utf16(name))) {
            image_.rename_sheet(at, name);
        } else if (choice == 5 && book_->delete_sheet(index)) {
            image_.remove_sheet(at);
        }
    }

    void change_cells(Sheet& sheet, SheetImage& image, int choice) {
        const int row = below(sheet.end_row() + 40), column = below(sheet.end_column() + 3) % 256;
        if (choice == 6) {
            const int last_row = row + below(9), last_column = std::min(255, column + below(4));
            done_ << image.name << " clear " << row << " " << column << "\n";
            ASSERT_TRUE(sheet.clear(row, last_row, column, last_column));
            const auto is_gone = [&](const auto& cell) {
                const auto [r, c] = cell.first;
                return r >= row && r <= last_row && c >= column && c <= last_column;
            };
            std::erase_if(image.cells, is_gone);
            std::erase_if(image.formulas, is_gone);
        } else if (choice == 7 && sheet.merge_size() > 0) {
            const int merge = below(sheet.merge_size());
            ASSERT_TRUE(sheet.delete_merge(merge));
            image.merged.erase(image.merged.begin() + merge);
        } else if (choice == 8) {
            ASSERT_TRUE(sheet.set_protect(below(2) == 0));
            ASSERT_TRUE(sheet.set_column_width(below(20), below(30)));
        } else {
            // Several next to each other, so that they share records.
            for (int i = 0; i <= below(4); ++i)
                write(sheet, image, row, std::min(255, column + i), choice % 4);
        }
    }

    void write(Sheet& sheet, SheetImage& image, int row, int column, int kind) {
        const Format* const format = below(4) == 0 ? date_ : nullptr;
        CellImage cell;
        done_ << image.name << " write " << kind << " " << row << " " << column << "\n";
        if (kind == 0) {
            cell = {CellKind::String, 0.0, below(2) ? u"new \u6F22" : u"n"};
            ASSERT_TRUE(sheet.write_str(row, column, cell.text, format));
        } else if (kind == 1) {
            cell = {CellKind::Boolean, 1.0};
            ASSERT_TRUE(sheet.write_bool(row, column, true, format));
            cell.number = sheet.read_num(row, column);
        } else if (kind == 2) {
            cell = {CellKind::Blank};
            ASSERT_TRUE(sheet.write_blank(row, column, format));
        } else {
            cell = {CellKind::Number, below(2) ? below(100) : below(1000) / 7.0};
            ASSERT_TRUE(sheet.write_num(row, column, cell.number, format));
        }
        cell.num_format = sheet.cell_format(row, column)->num_format();
        image.cells[{row, column}] = cell;
        image.formulas.erase({row, column});
    }

    std::mt19937 random_;
    std::unique_ptr<Book> book_;
    BookImage image_;
    Format* date_ = nullptr;
    int names_ = 0;
    std::ostringstream done_;
};

void run(const std::string& file, unsigned seed, int steps) {
    RandomChanges changes(file, seed);
    for (int i = 1; i <= steps; ++i) {
        changes.step();
        if (i % 8 != 0) continue;
        changes.check();
        if (testing::Test::HasFatalFailure()) return;
        if (i % 16 == 0) changes.reload();
    }
}

// --- A book with all that sheets refer to each other by

Bytes art(unsigned type, unsigned instance, const Bytes& body, bool is_container = false) {
    return Bytes()
        .u16(instance << 4 | (is_container ? 15 : 0))
        .u16(type)
        .u32(static_cast<std::uint32_t>(body.str().size()))
        .text(body.str());
}

/// A drawing of a group and `shapes` more, joined by a connector; cluster `cluster`.
std::string drawing(unsigned number, unsigned cluster, unsigned shapes) {
    Bytes all;
    for (unsigned i = 0; i <= shapes; ++i) {
        const Bytes shape = art(0xF00A, 1, Bytes().u32(cluster << 10 | i).u32(i == 0 ? 5 : 0));
        const Bytes properties = art(0xF00B, 1, Bytes().u16(0x4104).u32(1));
        all.text(art(0xF004, 0, Bytes().text(shape.str()).text(properties.str()), true).str());
    }
    const Bytes rule =
        art(0xF012, 0,
            Bytes().u32(2).u32(cluster << 10 | 1).u32(0).u32(cluster << 10 | 2).u32(0).u32(0));
    return art(0xF002, 0,
               Bytes()
                   .text(art(0xF008, number, Bytes().u32(shapes + 1).u32(cluster << 10 | shapes))
                             .str())
                   .text(art(0xF003, 0, all, true).str())
                   .text(art(0xF005, 0, rule, true).str()),
               true)
        .str();
}

std::string drawing_group() {
    Bytes block;
    block.u32(4u << 10).u32(4).u32(12).u32(3);
    for (unsigned i = 1; i <= 3; ++i)
        block.u32(i).u32(9);
    const Bytes picture = art(0xF007, 0, Bytes().text(std::string(24, '\0')).u32(12).u32(0).u32(0));
    return art(0xF000, 0,
               Bytes().text(art(0xF006, 0, block).str()).text(art(0xF001, 1, picture, true).str()),
               true)
        .str();
}

Bytes formula(int row, int column, const Bytes& tokens) {
    return cell(row, column)
        .f64(row)
        .u16(0)
        .u32(0)
        .u16(static_cast<unsigned>(tokens.str().size()))
        .text(tokens.str());
}

Bytes reference(unsigned entry) {
    return Bytes().u8(0x5A).u16(entry).u16(0).u16(0xC000);
}

Stream linked_sheet(unsigned number) {
    Stream sheet;
    sheet.bof8(0x10).record(0x0200, Bytes().u32(0).u32(60).u16(0).u16(6).u16(0));
    for (int row = 0; row < 60; row += 1 + row / 20) {
        sheet.record(0x027E, cell(row, 0).u32(2))
            .record(0xBE,
                    Bytes().u16(static_cast<unsigned>(row)).u16(1).u16(0).u16(0).u16(0).u16(3));
        sheet.record(0x06, formula(row, 4, reference(static_cast<unsigned>(row) % 4)));
        sheet.record(0x06,
                     formula(row, 5, Bytes().u8(0x43).u32(static_cast<unsigned>(row) % 4 + 1)));
    }
    // A shared formula with a name of a sheet, an array formula over three cells.
    for (int row = 60; row < 64; ++row) {
        sheet.record(0x06, formula(row, 0, Bytes().u8(1).u16(60).u16(0)));
        if (row == 60)
            sheet.record(0x04BC, Bytes().u16(60).u16(63).u8(0).u8(0).u16(4).u16(5).u8(0x43).u32(2));
        sheet.record(0x06, formula(row, 1, Bytes().u8(1).u16(60).u16(1)));
        if (row == 60)
            sheet.record(0x0221, Bytes().u16(60).u16(63).u8(1).u8(1).u16(0).u32(0).u16(7).text(
                                     reference(1).str()));
    }
    sheet.record(0xEC, drawing(number + 1, number + 1, 3));
    sheet.record(0x5D, Bytes().u16(0x15).u16(0x12).text(std::string(18, 0)).u32(0));
    sheet.bof8(0x20)
        .record(0x1051, Bytes().u8(1).u8(2).u16(0).u16(0).u16(7).text(reference(number).str()))
        .eof();
    sheet.record(0x023E, Bytes().u16(0x6B6).u16(0).u16(0).u32(0).u32(0).u32(0));
    sheet.record(0xE5, Bytes().u16(1).u16(2).u16(3).u16(0).u16(1));
    const std::u16string place = u"'B'!A1";
    sheet.record(0x01B8,
                 Bytes().text(std::string(24, '\1')).u32(2).u32(8).u32(7).wide(place).u16(0));
    return sheet.eof();
}

/// Sheets "A" to "C"; each has a name "X", the book has a name of sheet "A".
std::string linked_book() {
    const auto globals = [](const std::vector<std::size_t>& positions) {
        Stream stream;
        stream.bof8(0x05)
            .record(0x3D, std::string(18, 0))
            .record(0x013D, Bytes().u16(1).u16(2).u16(3));
        for (unsigned i = 0; i < 3; ++i)
            stream.record(0x85, bound_sheet(positions[i], 0, 0, std::string(1, "ABC"[i])));
        stream.record(0x01AE, Bytes().u16(3).u16(0x0401));
        Bytes links;
        links.u16(4);
        for (unsigned sheet : {0, 1, 2, 0})
            links.u16(0).u16(sheet).u16(sheet);
        stream.record(0x17, links);
        for (unsigned scope = 0; scope < 4; ++scope)
            stream.record(
                0x18, Bytes().u16(0).u8(0).u8(1).u16(7).u16(0).u16(scope).u32(0).u8(0).u8('X').text(
                          reference(scope == 0 ? 0 : scope - 1).str()));
        return stream.record(0xEB, drawing_group()).eof();
    };
    std::vector<std::size_t> positions(3);
    positions[0] = globals(positions).size();
    Stream sheets;
    for (unsigned i = 0; i < 3; ++i) {
        positions[i] = positions[0] + sheets.size();
        sheets.append(linked_sheet(i));
    }
    return globals(positions).append(sheets).str();
}

TEST(XlsRandomChanges, OfALinkedBookAreSaved) {
    const std::string file = linked_book();
    ASSERT_EQ(image_of(file).faults, std::set<std::string>{});
    for (unsigned seed = 1; seed <= 25 && !HasFatalFailure(); ++seed) {
        SCOPED_TRACE(seed);
        run(file, seed, 48);
    }
}

TEST(XlsRandomChanges, OfTheCollectionAreSaved) {
    const std::filesystem::path folder(ZX_SHARED_DATA "/corpus/dev");
    if (!std::filesystem::exists(folder)) GTEST_SKIP() << "no collection";
    constexpr std::uintmax_t kMostBytes = 110'000;
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().extension() != ".xls" || entry.file_size() > kMostBytes) continue;
        std::ifstream in(entry.path(), std::ios::binary);
        const std::string file{std::istreambuf_iterator<char>(in), {}};
        const auto book = xlCreateBookW();
        if (!book->load(files::memory_file(file)) || !book->insert_sheet(0, u"Probe", nullptr))
            continue; // damaged, or too old for changes to its sheets
        SCOPED_TRACE(entry.path());
        ++count;
        run(file, static_cast<unsigned>(file.size()), 32);
    }
    EXPECT_GT(count, 15);
}

} // namespace
} // namespace workbook::test
