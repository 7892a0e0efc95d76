# SPDX-License-Identifier: Apache-2.0
"""The gate: exchanges recorded with the real service, replayed."""

import unittest

from replay import difference, in_scope, replay_file, report
from support import shared_data

RECORDING = ("google", "recordings", "gspread-exchanges.jsonl")
# Every batch request and method that clients of this project use and the recording has; all of it has to be compared.
HAS_TO_BE_COMPARED = {
    "addNamedRange", "addProtectedRange", "addSheet", "autoResizeDimensions", "deleteDimension",
    "deleteProtectedRange", "deleteSheet", "mergeCells", "repeatCell", "unmergeCells", "updateCells",
    "updateSheetProperties", "drive.files.get", "drive.files.delete", "sheets.spreadsheets.get",
    "sheets.spreadsheets.values.get", "sheets.spreadsheets.values.update", "sheets.spreadsheets.values.clear",
}


@unittest.skipUnless(shared_data(*RECORDING), "the recorded exchanges are absent (ZX_SHARED)")
class RecordedExchanges(unittest.TestCase):
    def test_are_answered_alike(self):
        outcomes = replay_file(shared_data(*RECORDING))
        print(report(outcomes))
        compared = [outcome for outcome in outcomes if in_scope(outcome)]
        self.assertLessEqual(HAS_TO_BE_COMPARED, {kind for outcome in compared for kind in outcome.kind.split("+")})
        different = [outcome for outcome in compared if outcome.verdict != "same"]
        self.assertFalse(different, "\n".join(difference(outcome) for outcome in different[:5]))


if __name__ == "__main__":
    unittest.main()
