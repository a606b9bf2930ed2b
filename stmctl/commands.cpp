// The table of commands.
#include "stmctl/commands.hpp"

#include "stmctl/command_line/completion.hpp"
#include "stmctl/doctor/doctor.hpp"
#include "stmctl/flash/flash.hpp"
#include "stmctl/memory/memory.hpp"
#include "stmctl/mode/mode.hpp"
#include "stmctl/plot/plot.hpp"
#include "stmctl/records/records.hpp"
#include "stmctl/ring/ring.hpp"
#include "stmctl/settings/settings.hpp"

namespace stmctl
{

namespace
{

constexpr Command COMMANDS[] = {
    {"flash", "write an image to the co-processor's flash",
     "  stmctl flash firmware image.bin\n"
     "  stmctl flash firmware image.bin --retries 2\n"
     "  stmctl flash firmware image.bin --start\n"
     "  gzip -dc image.bin.gz | stmctl flash firmware -\n"
     "  stmctl flash booter booter.bin --yes\n",
     declare_flash},
    {"state", "show what the co-processor is running", "  stmctl state\n  stmctl state --json\n",
     declare_state},
    {"version", "show the version of the boot loader",
     "  stmctl version\n  stmctl version --json\n", declare_version},
    {"start", "start the boot loader", "  stmctl start\n", declare_start},
    {"reset", "leave the boot loader and start the application", "  stmctl reset\n", declare_reset},
    {"get", "read a value",
     "  stmctl get sampletime\n"
     "  stmctl get adc-word-54 3\n"
     "  stmctl get 0x06 3          the same, by code\n"
     "  stmctl get --all           everything, in the form that restore accepts\n"
     "  stmctl get --all --json\n",
     declare_get},
    {"set", "change a setting",
     "  stmctl set interpolation 2\n"
     "  stmctl set adc-value-pair 3 12.5 0.25\n",
     declare_set},
    {"list", "list all settings and queries",
     "  stmctl list\n"
     "  stmctl list --json\n",
     declare_list},
    {"save", "save the settings to a file",
     "  stmctl save settings.txt\n"
     "  stmctl save -\n"
     "\n"
     "Everything is saved that can be both read and set. The file is text: # starts a\n"
     "comment, the other lines are NAME [CHANNEL] VALUE. An existing file is replaced\n"
     "as a whole, or stays as it was.\n",
     declare_save},
    {"restore", "send the settings in a file",
     "  stmctl restore settings.txt\n"
     "  stmctl restore settings.txt --no-verify\n"
     "  stmctl get --all | stmctl restore -    everything that can be set\n"
     "\n"
     "If any line has an error, nothing is sent. Afterwards each setting is read back\n"
     "where possible. The exit status is 1 if one reads back differently or is not\n"
     "answered; the others are still sent as long as the application is running.\n",
     declare_restore},
    {"peek", "read one or four bytes of co-processor memory",
     "  stmctl peek 0x1F00\n"
     "  stmctl peek 0x1F00 --long\n",
     declare_peek},
    {"poke", "write bytes to co-processor memory",
     "  stmctl poke 0x1F00 171\n"
     "  stmctl poke 0x1F00 0xAB 0xCD\n",
     declare_poke},
    {"dump", "show a range of co-processor memory", "  stmctl dump 0x1F00 64\n", declare_dump},
    {"text", "read or write text byte by byte at one address",
     "  stmctl text 0x1F00\n"
     "  stmctl text 0x1F00 --write hello\n",
     declare_text},
    {"records", "read measurement records",
     "  stmctl records -n 200 --format csv -o records.csv\n"
     "  stmctl records --variant temp --duration 5 --format jsonl\n"
     "\n"
     "Records missing from the sequence of rel_t count as lost, also rejected ones.\n"
     "When a record is rejected, the rest of its block is lost as well. csv and jsonl\n"
     "omit records whose nr is 0. hex shows the first 48 bytes of each block and the\n"
     "number of its records, but no losses. With --variant temp, text labels the\n"
     "temperature omega_t, as the module does.\n",
     declare_records},
    {"follow", "show the live stream of records",
     "  stmctl follow --format csv --timestamps -o night.csv --append --keep-going\n"
     "  stmctl follow --variant temp --format jsonl --duration 60\n"
     "\n"
     "For what is counted see stmctl --help losses. With --append a log continues\n"
     "where an earlier run ended: the header is not repeated, and the incomplete last\n"
     "line of a run that was killed is removed. With --variant temp, text labels the\n"
     "temperature omega_t, as the module does.\n",
     declare_follow},
    {"adc", "read a frame of converter values",
     "  stmctl adc --format csv\n"
     "  stmctl adc -n 10 --format jsonl --timestamps\n"
     "\n"
     "If there may be several frames, csv and jsonl show the number of the frame,\n"
     "counted from 1, with each value.\n",
     declare_adc},
    {"raw", "read 50 firmware-defined bytes (48 are shown)",
     "  stmctl raw\n"
     "  stmctl raw --format jsonl\n",
     declare_raw},
    {"watch", "monitor the live stream of records",
     "  stmctl watch\n"
     "  stmctl watch --variant omega --duration 60 | tee watch.txt\n"
     "\n"
     "The fill is the highest since the previous line. A record with a fill of 191 or\n"
     "more counts as overflowing.\n",
     declare_watch},
    {"ring", "pass records to other processes by shared memory",
     "  stmctl ring write\n"
     "  stmctl ring read --format csv     in another terminal\n"
     "  stmctl ring status\n"
     "  stmctl ring remove\n",
     nullptr, ring_commands},
    {"plot", "draw columns of records",
     "  stmctl records -n 200 --format csv | stmctl plot\n"
     "  stmctl plot records.csv --columns I1,I2,I3 -o currents.svg\n",
     declare_plot},
    {"doctor", "check the setup and report what is wrong",
     "  stmctl doctor\n"
     "  stmctl doctor --json\n"
     "\n"
     "Nothing is changed, and nothing is sent while another program has the device\n"
     "open. For the exit status see stmctl --help status.\n",
     declare_doctor},
    {"completion", "print the completion script for a shell",
     "  source <(stmctl completion bash)\n"
     "  stmctl completion bash >/etc/bash_completion.d/stmctl\n"
     "  stmctl completion zsh >/usr/local/share/zsh/site-functions/_stmctl\n",
     declare_completion, nullptr, true},
};

} // namespace

std::span<const Command> commands()
{
    return COMMANDS;
}

} // namespace stmctl
