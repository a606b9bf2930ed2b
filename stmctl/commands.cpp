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
    {"flash", "write an image into the co-processor's flash",
     "  stmctl flash firmware image.bin\n"
     "  stmctl flash firmware image.bin --retries 2\n"
     "  stmctl flash firmware image.bin --start\n"
     "  gzip -dc image.bin.gz | stmctl flash firmware -\n"
     "  stmctl flash booter booter.bin --yes\n",
     declare_flash},
    {"state", "show what the co-processor runs", "  stmctl state\n  stmctl state --json\n",
     declare_state},
    {"version", "show the version of the boot loader",
     "  stmctl version\n  stmctl version --json\n", declare_version},
    {"start", "start the boot loader", "  stmctl start\n", declare_start},
    {"reset", "leave the boot loader and start the application", "  stmctl reset\n", declare_reset},
    {"get", "ask for a value",
     "  stmctl get sampletime\n"
     "  stmctl get adc-word-54 3\n"
     "  stmctl get 0x06 3          the same by its code\n"
     "  stmctl get --all           everything, in lines that restore takes\n"
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
    {"save", "write the settings into a file",
     "  stmctl save settings.txt\n"
     "  stmctl save -\n"
     "\n"
     "Saved is what can be both asked for and set. The file is text: # begins a comment, the\n"
     "other lines read NAME [CHANNEL] VALUE. It is written whole, or stays as it was.\n",
     declare_save},
    {"restore", "send the settings of a file",
     "  stmctl restore settings.txt\n"
     "  stmctl restore settings.txt --no-verify\n"
     "  stmctl get --all | stmctl restore -    what can be set of it\n"
     "\n"
     "Nothing is sent if a line has a mistake. Each setting is asked for afterwards, if it can\n"
     "be: one that reads back differently, or that is not answered, ends in status 1; the\n"
     "others are sent all the same while the application runs.\n",
     declare_restore},
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
    {"records", "read measurement records",
     "  stmctl records -n 200 --format csv -o records.csv\n"
     "  stmctl records --variant temp --duration 5 --format jsonl\n"
     "\n"
     "Lost are records that are missing in rel_t, rejected ones among them. With one\n"
     "that is rejected the rest of its block is lost. csv and jsonl leave out records\n"
     "whose nr is 0; hex shows the first 48 bytes of each block, how many records they\n"
     "are for, and no losses. Of --variant temp, text calls the temperature omega_t,\n"
     "which is the module's word for it.\n",
     declare_records},
    {"follow", "show the live stream of records",
     "  stmctl follow --format csv --timestamps -o night.csv --append --keep-going\n"
     "  stmctl follow --variant temp --format jsonl --duration 60\n"
     "\n"
     "What is counted is told by stmctl --help losses. With --append a log goes on\n"
     "where an earlier run has ended: below its header, and without the half line of\n"
     "one that was killed. Of --variant temp, text calls the temperature omega_t,\n"
     "which is the module's word for it.\n",
     declare_follow},
    {"adc", "read a frame of the converter's values",
     "  stmctl adc --format csv\n"
     "  stmctl adc -n 10 --format jsonl --timestamps\n"
     "\n"
     "In csv and jsonl each value has the number of its frame, from 1 on, if there\n"
     "may be several.\n",
     declare_adc},
    {"raw", "read 50 bytes that only the firmware understands; 48 are shown",
     "  stmctl raw\n"
     "  stmctl raw --format jsonl\n",
     declare_raw},
    {"watch", "watch how well the live stream of records goes",
     "  stmctl watch\n"
     "  stmctl watch --variant omega --duration 60 | tee watch.txt\n"
     "\n"
     "The fill is the highest since the line before; from 191 on a record counts as overflowing.\n",
     declare_watch},
    {"ring", "hand records to other processes through shared memory",
     "  stmctl ring write\n"
     "  stmctl ring read --format csv     in another terminal\n"
     "  stmctl ring status\n"
     "  stmctl ring remove\n",
     nullptr, ring_commands},
    {"plot", "draw columns of records",
     "  stmctl records -n 200 --format csv | stmctl plot\n"
     "  stmctl plot records.csv --columns I1,I2,I3 -o currents.svg\n",
     declare_plot},
    {"doctor", "look at all that a board needs, and tell what is wrong",
     "  stmctl doctor\n"
     "  stmctl doctor --json\n"
     "\n"
     "Nothing is changed, and nothing sent while another program has the device open. The exit\n"
     "status is told by stmctl --help status.\n",
     declare_doctor},
    {"completion", "print the completions for a shell",
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
