// Standard error as it was when the program started.
#pragma once

namespace simulator
{

// A descriptor for what was standard error when the program started. A program that replaces it, to
// catch what is written there, keeps the original under another number in order to restore it. If
// there is none, standard error as it is now.
int first_standard_error();

} // namespace simulator
