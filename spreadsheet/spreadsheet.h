// SPDX-License-Identifier: Apache-2.0
//
// Everything that a host needs, in one include.
#pragma once

#include "spreadsheet/book.h"
#include "spreadsheet/book_factory.h"
#include "spreadsheet/book_format.h"
#include "spreadsheet/cell_exchange.h"
#include "spreadsheet/cell_iterator.h"
#include "spreadsheet/exception.h"
#include "spreadsheet/failure.h"
#include "spreadsheet/limits.h"
#include "spreadsheet/online.h"
#include "spreadsheet/range.h"
#include "spreadsheet/sheet.h"
#include "spreadsheet/sheet_contents.h"
#include "spreadsheet/table.h"
#include "spreadsheet/version.h"
