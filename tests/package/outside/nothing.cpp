// SPDX-License-Identifier: MIT
// A library needs a file.
extern const int nothing;
const int nothing = 0;
