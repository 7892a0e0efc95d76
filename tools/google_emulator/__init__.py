# SPDX-License-Identifier: Apache-2.0
"""A stand-in on 127.0.0.1 for the Google Sheets v4 and Drive v3 services, for tests and for trying things out."""
