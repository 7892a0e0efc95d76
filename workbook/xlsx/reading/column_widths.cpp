// SPDX-License-Identifier: Apache-2.0
//
// Reads and splits the spans in a tree of the cols element.
#include "workbook/xlsx/reading/column_widths.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <string>
#include <tuple>
#include <utility>

#include "foundation/code_points.h"
#include "foundation/unicode.h"
#include "workbook/xlsx/xlsx_limits.h"
#include "workbook/xml/xml_tree.h"

namespace workbook {

namespace {

/// Columns with all that their element says but its place.
struct Columns {
    int first, last;
    std::vector<std::pair<std::string, std::string>> attributes;
};

std::optional<std::pair<int, int>> place_of(pugi::xml_node column) {
    const auto min = attribute_number(column, "min"), max = attribute_number(column, "max");
    if (!min || !max || *min < 1 || *min > *max || *min > kMaxColumns) return {};
    return std::pair{static_cast<int>(*min) - 1,
                     static_cast<int>(std::min<std::uint32_t>(*max, kMaxColumns)) - 1};
}

/// Calls `visit(place, element)` for each span of columns.
template <class Visit>
void each_span(std::string_view markup, const Visit& visit) {
    pugi::xml_document tree;
    tree.load_buffer(markup.data(), markup.size());
    each_child(root_element(tree, "cols"), "col", [&](pugi::xml_node element) {
        if (const auto place = place_of(element)) visit(*place, element);
    });
}

/// The spans in ascending order; of columns that are in two of them the first counts.
std::vector<Columns> spans_of(std::string_view markup) {
    std::vector<Columns> spans;
    each_span(markup, [&](std::pair<int, int> place, pugi::xml_node element) {
        Columns span{place.first, place.second, {}};
        for (const pugi::xml_attribute attribute : element.attributes()) {
            const std::string_view name = attribute.name();
            if (name != "min" && name != "max")
                span.attributes.emplace_back(name, attribute.value());
        }
        spans.push_back(std::move(span));
    });
    std::stable_sort(spans.begin(), spans.end(),
                     [](const Columns& a, const Columns& b) { return a.first < b.first; });
    int free = 0;
    std::erase_if(spans, [&free](Columns& span) {
        span.first = std::max(span.first, free);
        free = std::max(free, span.last + 1);
        return span.first > span.last;
    });
    return spans;
}

std::string number_text(double number) {
    char text[40];
    return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

void set(Columns& columns, std::string_view name, const std::string& value) {
    for (auto& [known, old] : columns.attributes)
        if (known == name) {
            old = value;
            return;
        }
    columns.attributes.emplace_back(name, value);
}

/// Columns one after another; those that say the same as the ones before join them.
class Result {
  public:
    void add(Columns columns) {
        if (columns.first > columns.last) return;
        if (!spans_.empty() && spans_.back().last + 1 == columns.first &&
            spans_.back().attributes == columns.attributes)
            spans_.back().last = columns.last;
        else
            spans_.push_back(std::move(columns));
    }

    std::string markup(const std::string& prefix) const {
        if (spans_.empty()) return {};
        pugi::xml_document tree;
        pugi::xml_node root = tree.append_child((prefix + "cols").c_str());
        for (const Columns& span : spans_) {
            pugi::xml_node element = root.append_child((prefix + "col").c_str());
            element.append_attribute("min") = span.first + 1;
            element.append_attribute("max") = span.last + 1;
            for (const auto& [name, value] : span.attributes)
                element.append_attribute(name.c_str()) = value.c_str();
        }
        std::string text = tree_text(tree);
        return text.substr(text.find("?>") == std::string::npos ? 0 : text.find("?>") + 2);
    }

  private:
    std::vector<Columns> spans_;
};

Columns with_width(Columns columns, double width) {
    set(columns, "width", number_text(width));
    set(columns, "customWidth", "1");
    return columns;
}

std::string prefix_of(std::string_view markup, std::string_view absent) {
    const std::size_t begin = markup.find('<');
    const std::size_t end = markup.find_first_of(" \t\r\n/>", begin);
    if (begin == std::string_view::npos || end == std::string_view::npos)
        return std::string(absent);
    const std::string_view name = markup.substr(begin + 1, end - begin - 1);
    return std::string(name.substr(0, name.find(':') + 1)); // npos + 1 is 0
}

/// The width of a column that shows `hundredths` of digits.

} // namespace

std::vector<ColumnSpan> read_column_spans(std::string_view markup) {
    std::vector<ColumnSpan> spans;
    each_span(markup, [&spans](std::pair<int, int> place, pugi::xml_node element) {
        ColumnSpan span;
        std::tie(span.first, span.last) = place;
        const std::string_view width = attribute_value(element, "width").value_or("");
        double number = 0.0;
        const auto [end, problem] =
            std::from_chars(width.data(), width.data() + width.size(), number);
        if (problem == std::errc() && std::isfinite(number) && number > 0) span.width = number;
        if (const auto format = attribute_number(element, "style")) {
            span.format = *format;
            span.has_format = true;
        }
        spans.push_back(span);
    });
    return spans;
}

std::string set_column_widths(std::string_view markup, std::string_view prefix,
                              const std::map<int, double>& widths) {
    Result result;
    auto wanted = widths.begin();
    const auto add_new_before = [&](int end) {
        for (; wanted != widths.end() && wanted->first < end; ++wanted)
            result.add(with_width({wanted->first, wanted->first, {}}, wanted->second));
    };
    for (Columns& span : spans_of(markup)) {
        add_new_before(span.first);
        for (; wanted != widths.end() && wanted->first <= span.last; ++wanted) {
            result.add({span.first, wanted->first - 1, span.attributes});
            result.add(with_width({wanted->first, wanted->first, span.attributes}, wanted->second));
            span.first = wanted->first + 1;
        }
        result.add(std::move(span));
    }
    add_new_before(kMaxColumns);
    return result.markup(prefix_of(markup, prefix));
}

} // namespace workbook
