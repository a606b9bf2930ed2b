/* Yardstick: a program that does nothing but print what update prints without arguments. */
#include <stdio.h>

int main(void)
{
    puts("No parameter!");
    puts("Usage: update <parameter> [<filename>]\n"
         "\t<parameter>:\n"
         "\t -firmware: load new firmware (default: tarvo.bin)\n"
         "\t -booter:   load new booter (default: booter.bin)\n"
         "\t -start:    start the bootloader mode\n"
         "\t -reset:    finish the bootloader mode and start the application\n"
         "\t -ver:      print the bootloader version \n"
         "\t -state:    show the mode the stm32 is running\n"
         "\t            0: unknown\n"
         "\t            1: bootloader mode\n"
         "\t            2: application mode\n"
         "\t<filename>: a customer specific filename instead of the default filename");
    return 1;
}
