// SPDX-License-Identifier: Apache-2.0
//
// A spreadsheet of the service: its identifier, what its metadata tell, and the requests that
// change its sheets. Metadata follow every change that is made through this object.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "spreadsheet/gsheet/google_worksheet.h"
#include "spreadsheet/gsheet/sheet_properties.h"

namespace spreadsheet {

/// Every operation throws the `Exception`s of the transport and then leaves the object as it was.
class GoogleSheetWorkbook {
  public:
    /// Sends nothing yet; the metadata are fetched when they are first asked for.
    explicit GoogleSheetWorkbook(std::u16string id);
    /// A new spreadsheet of that title.
    static std::shared_ptr<GoogleSheetWorkbook> create(const std::u16string& title);

    const std::u16string& id() const { return id_; }
    const std::u16string& title();

    /// Fetches the names of the sheets, or everything about them.
    void load_names();
    void load_metadata();

    /// With `names_only` the names are enough, otherwise everything is fetched when it is not
    /// there.
    std::size_t sheet_count(bool names_only);
    std::vector<std::u16string> sheet_names(bool names_only);
    /// No value when there is no such sheet.
    std::optional<std::u16string> sheet_name(int index, bool names_only);
    /// `Exception` 6 when there is no such sheet.
    gsheet::SheetKind sheet_kind(std::size_t index);
    /// The object of a sheet, the same one at every call; null for a kind of sheet that has none.
    std::shared_ptr<GoogleSheetWorksheet> worksheet(std::size_t index);

    /// As `OnlineBook` has them.
    std::optional<std::size_t> sheet_with_id(std::int64_t sheet_id);
    std::vector<Range> used_ranges(const std::vector<std::size_t>& sheet_indices);
    struct NamedCells {
        std::size_t sheet_index;
        Range range;
    };
    std::optional<NamedCells> find_name(const std::u16string& name);

    /// Counts the metadata that came; the sheets may be others than before whenever it differs.
    std::uint64_t revision() const { return revision_; }

    /// Inserts a sheet, an empty one or a copy of the sheet at `source`, and returns the index that
    /// it came to.
    std::size_t add_sheet(std::size_t index, const std::u16string& name);
    std::size_t copy_sheet(std::size_t source, std::size_t index, const std::u16string& name);
    /// A copy by one request; what it came to is fetched by the next question.
    void duplicate_sheet(std::size_t source, std::size_t index, const std::u16string& name);
    /// `Exception` 6 when there is no such sheet, 46 for the last one.
    void remove_sheet(std::size_t index);
    /// Moves the sheet at `from` so that it stands at `to`; both are valid and differ.
    void move_sheet(std::size_t from, std::size_t to);

  private:
    enum class Known { nothing, names, everything };
    struct Entry {
        std::shared_ptr<gsheet::SheetProperties> properties;
        std::shared_ptr<GoogleSheetWorksheet> worksheet;
    };

    void need(Known level);
    void fetch(Known level);
    /// Takes over what a reply tells; sheets that were there keep their objects.
    void take_over(std::vector<gsheet::SheetProperties> sheets, Known level);
    Entry& entry(std::size_t index);
    Entry make_entry(gsheet::SheetProperties properties) const;
    std::size_t index_of(std::int64_t sheet_id);
    /// A request that makes a sheet of that name. Where a repeated request is refused since the
    /// first attempt has made the sheet, the reply is empty.
    gsheet::Object send_new_sheet(const std::u16string& name, const char* request_name,
                                  gsheet::Object request);
    /// The identifier of a new copy. Where the request was repeated, its other copies are deleted.
    std::int64_t send_copy(std::size_t source);
    /// Identifiers of the sheets that were not in the spreadsheet when its metadata came.
    std::vector<std::int64_t> ids_of_new_copies(const std::u16string& source_title);
    /// Gives a fresh copy its name and place; takes it away again when that fails.
    void place_copy(std::int64_t sheet_id, std::size_t index, const std::u16string& name);

    std::u16string id_;
    std::u16string title_;
    std::vector<Entry> sheets_; ///< in the order of the spreadsheet
    Known known_ = Known::nothing;
    std::uint64_t revision_ = 0;
};

} // namespace spreadsheet
