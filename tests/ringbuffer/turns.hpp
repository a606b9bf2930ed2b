// A writer and a reader that take turns on the attached ring.
#pragma once

#include <vector>

using Numbers = std::vector<int>;

Numbers from_to(int first, int last);

class Turns
{
  public:
    // Opens both sides.
    void open();

    // Puts records with the numbers that follow.
    void put(int records);

    // The numbers of the records that a reader takes at a look; 0 is a slot that was never filled.
    Numbers read();

    // The same in parts: what a look gives, and a batch begun if that is 1; one record of it; all
    // that are left of it.
    int begin();
    int next();
    Numbers rest();

    int writer = 0;
    int reader = 0;
    int latest = 0;
};
