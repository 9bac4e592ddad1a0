// SPDX-License-Identifier: MIT
// A source for the headers that the tests have in common; they are compiled once, before the tests.
