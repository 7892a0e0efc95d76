// SPDX-License-Identifier: Apache-2.0
//
// FILTER, PY and SORT alone have a longer prefix.
#include "workbook/functions/later_functions.h"

#include <algorithm>
#include <iterator>
#include <string>

namespace workbook {

namespace {

constexpr std::string_view kPrefix = "_xlfn.";
constexpr std::string_view kSheetPrefix = "_xlfn._xlws.";

constexpr std::string_view kSheetNames[] = {"FILTER", "PY", "SORT"};

/// In the order of their bytes.
constexpr std::string_view kNames[] = {"ACOT",
                                       "ACOTH",
                                       "AGGREGATE",
                                       "ANCHORARRAY",
                                       "ARABIC",
                                       "ARRAYTOTEXT",
                                       "BASE",
                                       "BETA.DIST",
                                       "BETA.INV",
                                       "BINOM.DIST",
                                       "BINOM.DIST.RANGE",
                                       "BINOM.INV",
                                       "BITAND",
                                       "BITLSHIFT",
                                       "BITOR",
                                       "BITRSHIFT",
                                       "BITXOR",
                                       "BYCOL",
                                       "BYROW",
                                       "CEILING.MATH",
                                       "CEILING.PRECISE",
                                       "CHISQ.DIST",
                                       "CHISQ.DIST.RT",
                                       "CHISQ.INV",
                                       "CHISQ.INV.RT",
                                       "CHISQ.TEST",
                                       "CHOOSECOLS",
                                       "CHOOSEROWS",
                                       "COMBINA",
                                       "CONCAT",
                                       "CONFIDENCE.NORM",
                                       "CONFIDENCE.T",
                                       "COT",
                                       "COTH",
                                       "COVARIANCE.P",
                                       "COVARIANCE.S",
                                       "CSC",
                                       "CSCH",
                                       "DAYS",
                                       "DECIMAL",
                                       "DROP",
                                       "ERF.PRECISE",
                                       "ERFC.PRECISE",
                                       "EXPAND",
                                       "EXPON.DIST",
                                       "F.DIST",
                                       "F.DIST.RT",
                                       "F.INV",
                                       "F.INV.RT",
                                       "F.TEST",
                                       "FIELDVALUE",
                                       "FILTERXML",
                                       "FLOOR.MATH",
                                       "FLOOR.PRECISE",
                                       "FORECAST.ETS",
                                       "FORECAST.ETS.CONFINT",
                                       "FORECAST.ETS.SEASONALITY",
                                       "FORECAST.ETS.STAT",
                                       "FORECAST.LINEAR",
                                       "FORMULATEXT",
                                       "GAMMA",
                                       "GAMMA.DIST",
                                       "GAMMA.INV",
                                       "GAMMALN.PRECISE",
                                       "GAUSS",
                                       "GROUPBY",
                                       "HSTACK",
                                       "HYPGEOM.DIST",
                                       "IFNA",
                                       "IFS",
                                       "IMAGE",
                                       "IMCOSH",
                                       "IMCOT",
                                       "IMCSC",
                                       "IMCSCH",
                                       "IMSEC",
                                       "IMSECH",
                                       "IMSINH",
                                       "IMTAN",
                                       "ISFORMULA",
                                       "ISOMITTED",
                                       "ISOWEEKNUM",
                                       "LAMBDA",
                                       "LET",
                                       "LOGNORM.DIST",
                                       "LOGNORM.INV",
                                       "MAKEARRAY",
                                       "MAP",
                                       "MAXIFS",
                                       "MINIFS",
                                       "MODE.MULT",
                                       "MODE.SNGL",
                                       "MUNIT",
                                       "NEGBINOM.DIST",
                                       "NORM.DIST",
                                       "NORM.INV",
                                       "NORM.S.DIST",
                                       "NORM.S.INV",
                                       "NUMBERVALUE",
                                       "PDURATION",
                                       "PERCENTILE.EXC",
                                       "PERCENTILE.INC",
                                       "PERCENTOF",
                                       "PERCENTRANK.EXC",
                                       "PERCENTRANK.INC",
                                       "PERMUTATIONA",
                                       "PHI",
                                       "PIVOTBY",
                                       "POISSON.DIST",
                                       "QUARTILE.EXC",
                                       "QUARTILE.INC",
                                       "QUERYSTRING",
                                       "RANDARRAY",
                                       "RANK.AVG",
                                       "RANK.EQ",
                                       "REDUCE",
                                       "REGEXEXTRACT",
                                       "REGEXREPLACE",
                                       "REGEXTEST",
                                       "RRI",
                                       "SCAN",
                                       "SEC",
                                       "SECH",
                                       "SEQUENCE",
                                       "SHEET",
                                       "SHEETS",
                                       "SINGLE",
                                       "SKEW.P",
                                       "SORTBY",
                                       "STDEV.P",
                                       "STDEV.S",
                                       "STOCKHISTORY",
                                       "SWITCH",
                                       "T.DIST",
                                       "T.DIST.2T",
                                       "T.DIST.RT",
                                       "T.INV",
                                       "T.INV.2T",
                                       "T.TEST",
                                       "TAKE",
                                       "TEXTAFTER",
                                       "TEXTBEFORE",
                                       "TEXTJOIN",
                                       "TEXTSPLIT",
                                       "TOCOL",
                                       "TOROW",
                                       "TRIMRANGE",
                                       "UNICHAR",
                                       "UNICODE",
                                       "UNIQUE",
                                       "VALUETOTEXT",
                                       "VAR.P",
                                       "VAR.S",
                                       "VSTACK",
                                       "WEBSERVICE",
                                       "WEIBULL.DIST",
                                       "WRAPCOLS",
                                       "WRAPROWS",
                                       "XLOOKUP",
                                       "XMATCH",
                                       "XOR",
                                       "Z.TEST"};
static_assert(std::is_sorted(std::begin(kNames), std::end(kNames)));

} // namespace

LaterFunction later_function(std::string_view name) {
    std::string capitals(name);
    for (char& c : capitals)
        c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);
    for (const std::string_view known : kSheetNames)
        if (known == capitals) return {kSheetPrefix, known};
    const auto found = std::lower_bound(std::begin(kNames), std::end(kNames), capitals);
    if (found == std::end(kNames) || *found != capitals) return {};
    return {kPrefix, *found};
}

std::string_view without_later_prefix(std::string_view name) {
    for (const std::string_view prefix : {kSheetPrefix, kPrefix}) {
        if (!name.starts_with(prefix)) continue;
        const std::string_view rest = name.substr(prefix.size());
        return later_function(rest).prefix == prefix ? rest : name;
    }
    return name;
}

} // namespace workbook
