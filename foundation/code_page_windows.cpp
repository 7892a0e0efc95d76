// SPDX-License-Identifier: Apache-2.0
//
// Code pages by the system's own tables.
#include <algorithm>
#include <limits>

#include "foundation/code_page.h"
#include "foundation/windows_files.h"

namespace foundation {

namespace {

static_assert(sizeof(wchar_t) == sizeof(char16_t));

class SystemPage final : public CodePage {
  public:
    explicit SystemPage(unsigned number) : number_(number) {}

    std::u16string decode(std::string_view bytes) override {
        if (bytes.empty() || bytes.size() > std::numeric_limits<int>::max()) return {};
        std::u16string text(2 * bytes.size(), u'\0');
        const int units = MultiByteToWideChar(
            number_, 0, bytes.data(), static_cast<int>(bytes.size()),
            reinterpret_cast<wchar_t*>(text.data()),
            static_cast<int>(std::min<std::size_t>(text.size(), std::numeric_limits<int>::max())));
        text.resize(static_cast<std::size_t>(units));
        return text;
    }

  private:
    const unsigned number_;
};

} // namespace

std::unique_ptr<CodePage> open_code_page(unsigned number) {
    if (!IsValidCodePage(number)) return nullptr;
    return std::make_unique<SystemPage>(number);
}

} // namespace foundation
