// The table of commands.
#include "stmctl/command_line/command.hpp"

namespace
{

constexpr Command COMMANDS[] = {
    {"flash", "write an image into the co-processor's flash",
     "  stmctl flash firmware image.bin\n"
     "  stmctl flash firmware image.bin --retries 2\n"
     "  stmctl flash booter booter.bin --yes\n",
     declare_flash},
    {"state", "show what the co-processor runs", "  stmctl state\n", declare_state},
    {"version", "show the version of the boot loader", "  stmctl version\n", declare_version},
    {"start", "start the boot loader", "  stmctl start\n", declare_start},
    {"reset", "leave the boot loader and start the application", "  stmctl reset\n", declare_reset},
    {"get", "ask for a value",
     "  stmctl get sampletime\n"
     "  stmctl get adc-word-54 3\n"
     "  stmctl get 0x06 3          the same by its code\n",
     declare_get},
    {"set", "change a setting",
     "  stmctl set interpolation 2\n"
     "  stmctl set adc-value-pair 3 12.5 0.25\n",
     declare_set},
    {"list", "list all settings and queries", "  stmctl list\n", declare_list},
    {"peek", "read a byte, or four, of the co-processor's memory",
     "  stmctl peek 0x1F00\n"
     "  stmctl peek 0x1F00 --long\n",
     declare_peek},
    {"poke", "write bytes into the co-processor's memory",
     "  stmctl poke 0x1F00 171\n"
     "  stmctl poke 0x1F00 0xAB 0xCD\n",
     declare_poke},
    {"dump", "show a range of the co-processor's memory", "  stmctl dump 0x1F00 64\n",
     declare_dump},
    {"text", "read the text that an address gives byte by byte, or write one",
     "  stmctl text 0x1F00\n"
     "  stmctl text 0x1F00 --write hello\n",
     declare_text},
    {"completion", "print the completions for a shell",
     "  source <(stmctl completion bash)\n"
     "  stmctl completion bash >/etc/bash_completion.d/stmctl\n",
     declare_completion},
};

} // namespace

std::span<const Command> commands()
{
    return COMMANDS;
}
