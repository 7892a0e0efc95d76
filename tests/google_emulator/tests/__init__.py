# SPDX-License-Identifier: Apache-2.0
"""Tests of the emulator itself: python3 -m unittest discover -s google_emulator/tests -t . in tests/."""
