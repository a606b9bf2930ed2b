// The help of virtual-board.
#include "simulator/launcher/help.hpp"

#include "simulator/faults/faults.hpp"
#include "simulator/launcher/options.hpp"
#include "simulator/launcher/tell.hpp"

namespace simulator
{

std::string help_text()
{
    std::string help = "Usage: virtual-board [OPTIONS] COMMAND [ARGUMENTS]\n"
                       "       virtual-board tell DIR ORDER\n"
                       "\n"
                       "Runs a command with a virtual co-processor behind /dev/spidev1.0. Without\n"
                       "--board, the board is a new one that lasts as long as the command.\n"
                       "\n"
                       "Options:\n";
    help += describe_options();
    help += "\nFaults (STEP is a step of a download: mode, header, or the number of a block;\n"
            "WHERE is a STEP, or a CODE, a command of the application, such as 0xA0; RECORD\n"
            "and BLOCK are numbers of records and of their blocks, counted from 1 during the\n"
            "run):\n";
    help += describe_faults();
    help += "TIME, FROM and TO are written 2s, 2.5s or 1500ms. Like the times in a\n"
            "transcript, they count from the moment when the board's power comes. TO itself\n"
            "is excluded.\n"
            "\nThe power comes when a program first opens the device, and goes with the last\n"
            "program that has used it. Until then others find the same co-processor, on one\n"
            "wire, and must give the same options or none. Each of them moves the board's time\n"
            "on; if two count theirs at once, the order is the scheduler's.\n";
    help += "\nOrders (to the board in DIR while programs use it, obeyed with their next call):\n" +
            describe_orders();
    help += "\n"
            "Examples:\n"
            "  virtual-board update -ver\n"
            "      one command on a fresh board\n"
            "  virtual-board --board my-board update -firmware image.bin\n"
            "  cmp -n $(stat -c %s image.bin) -i 0:16384 image.bin my-board/flash.bin\n"
            "      load an image, then compare it with the flash; firmware starts at 16384\n"
            "  virtual-board --fault checksum-error@3 --transcript - update -firmware image.bin\n"
            "      see what happens when block 3 is damaged in transit\n"
            "  virtual-board --count-time --fault silence@header update -firmware image.bin\n"
            "      a time-out of 16 seconds without the wait\n"
            "  virtual-board --board my-board --answer 0x06/3=-250 --answer 0x21=hello FRONT-END\n"
            "      channel 3 of query 0x06 answers -250, and query 0x21 a text; the settings\n"
            "      made by FRONT-END are in my-board/settings\n"
            "  virtual-board tell my-board restart\n"
            "      restart the co-processor of a board that another terminal uses\n"
            "  virtual-board --through --transcript dialogue.txt update -state\n"
            "      record the dialogue with a real board\n"
            "  virtual-board --emulator 'qemu-arm -L /usr/arm-linux-gnueabihf' \\\n"
            "                --preload build/board/lib/libvirtual-board.so ./update -state\n"
            "      run a program of the board's own architecture\n"
            "\n"
            "The exit status is the command's; 125 if virtual-board itself fails, 126 if the\n"
            "command cannot be run, 127 if there is no such command.\n";
    return help;
}

} // namespace simulator
