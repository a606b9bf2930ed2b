// Standard error as the program was begun with it.
#pragma once

namespace simulator
{

// A descriptor for what was standard error when the program began. A program that has put something
// else in its place, to catch what is written there, keeps it under another number in order to put
// it back. Standard error as it is if there is none.
int first_standard_error();

} // namespace simulator
