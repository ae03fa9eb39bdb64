// The table is long because there is one row for each obstacle.
#include "host/obstacles/obstacles.h"

#include "host/terminal/text.h"

#include <algorithm>
#include <cctype>
#include <fmt/args.h>
#include <fmt/format.h>

namespace host {

namespace {

struct Row {
    Obstacle obstacle;
    const char *name;
    Severity severity;
    ExitCode code;
    const char *text, *command, *then;
    const char *line = "";
};

constexpr auto kNote = Severity::Note;
constexpr auto kMayBlock = Severity::MayBlock;
constexpr auto kBlocks = Severity::Blocks;

constexpr char kGone[] = "no such device; check the cable and the name (ls /dev/serial/by-id lists USB adapters)";
constexpr char kBusy[] = "busy: held by {who}; wait until it is done, or end it";
constexpr char kBusyHidden[] = "busy: held by another program; 'sudo fuser -v {node}' names it";

constexpr Row kRows[] = {
    {Obstacle::NothingFound, "nothing-found", kBlocks, ExitCode::Missing, "no serial port and no USB plotter found",
     "sudo dmesg | tail",
     "right after plugging it in: when nothing new is there, change the cable (one that only charges has no data wires) "
     "or the socket, and see that the plotter is on"},
    {Obstacle::NoSuchPort, "no-such-port", kBlocks, ExitCode::Missing, "there is no {port}", "vectorix ports",
     "lists those that there are; when it is not among them, change the cable: one that only charges has no data wires",
     kGone},
    {Obstacle::NotSerial, "not-serial", kBlocks, ExitCode::Missing, "{port} is {what}, not a serial port", "vectorix ports",
     "lists the serial ports", "{what}, not a serial port; name one such as /dev/ttyUSB0"},
    {Obstacle::NoHardware, "no-hardware", kBlocks, ExitCode::Missing, "there is no hardware behind the slot {port}",
     "vectorix ports", "lists the ports that there are",
     "there is no hardware behind this slot; 'vectorix ports' lists the ports that there are"},
    {Obstacle::NoSuchPlotter, "no-such-plotter", kBlocks, ExitCode::Missing, "no such USB plotter is connected", "lsusb",
     "shows what is; when the plotter is not there, change the cable (one that only charges has no data wires), and see "
     "that it is on. One with a serial cable or adapter is looked at with --port"},
    {Obstacle::NoNode, "no-node", kBlocks, ExitCode::Missing, "the system knows the device, but there is no {node}",
     "sudo udevadm trigger --action=add && sudo udevadm settle", "or plug it in again",
     "there is no {node}; plug it in again"},
    {Obstacle::NoNodeInContainer, "no-node-in-container", kBlocks, ExitCode::Missing,
     "this container has not been given {node}", "docker run --device={node} ...",
     "start it anew so; other container programs have the like",
     "this container has not been given {node}; start it anew with --device={node}"},
    {Obstacle::NotInGroup, "not-in-group", kBlocks, ExitCode::Permission,
     "permission denied ({rights}); {user} is not in the group {group}", "sudo usermod -aG {group} {user}",
     "log in anew after it",
     "{where}permission denied; add yourself to the group {group}: sudo usermod -aG {group} $USER (then log in again)"},
    {Obstacle::NotInSession, "not-in-session", kBlocks, ExitCode::Permission,
     "permission denied ({rights}); {user} is in the group {group}, but this session began before that", "newgrp {group}",
     "for this terminal, or log in anew for all",
     "{where}permission denied; log in again: this session began before you were in the group {group}"},
    {Obstacle::RootOnlyPort, "root-only", kBlocks, ExitCode::Permission,
     "permission denied ({rights}); the system keeps the port to its owner",
     "sudo chgrp dialout {node} && sudo chmod 660 {node}",
     "gives it to the group dialout until the system makes it anew; a udev rule makes that last",
     "permission denied; ask the administrator for access to the port"},
    {Obstacle::NoUsbRules, "no-usb-rules", kBlocks, ExitCode::Permission,
     "permission denied ({rights}); the rules that give plotters to people are not installed",
     "sudo cp packaging/udev/70-orb-vectorix.rules /etc/udev/rules.d/ && sudo udevadm control --reload && sudo udevadm "
     "trigger --action=add",
     "plug the plotter in again after it; the rules give it to the person at the machine and to the group lp",
     "{where}permission denied; copy packaging/udev/70-orb-vectorix.rules into /etc/udev/rules.d/, "
     "run 'sudo udevadm control --reload && sudo udevadm trigger', and plug the plotter in again"},
    {Obstacle::NoRuleForVendor, "no-rule-for-vendor", kBlocks, ExitCode::Permission,
     "permission denied ({rights}); no rule gives devices of the vendor {vendor} to people",
     "echo 'SUBSYSTEM==\"usb\", ENV{{DEVTYPE}}==\"usb_device\", ATTR{{idVendor}}==\"{vendor}\", MODE=\"0660\", "
     "GROUP=\"lp\", "
     "TAG+=\"uaccess\"' | sudo tee /etc/udev/rules.d/70-plotter-{vendor}.rules && sudo udevadm control --reload && sudo "
     "udevadm trigger --action=add",
     "plug the plotter in again after it",
     "{where}permission denied; copy packaging/udev/70-orb-vectorix.rules with its vendor {vendor} added into "
     "/etc/udev/rules.d/, "
     "run 'sudo udevadm control --reload && sudo udevadm trigger', and plug the plotter in again"},
    {Obstacle::RulesNotApplied, "rules-not-applied", kBlocks, ExitCode::Permission,
     "permission denied ({rights}); {file} gives the plotter to people, but was not there when it was plugged in",
     "sudo udevadm control --reload && sudo udevadm trigger --action=add", "or plug the plotter in again",
     "{where}permission denied; "
     "run 'sudo udevadm control --reload && sudo udevadm trigger', and plug the plotter in again"},
    {Obstacle::Console, "console", kBlocks, ExitCode::Busy, "the kernel's console is on this port: it writes there",
     "sudoedit /etc/default/grub",
     "take console={name} out of it, then: sudo update-grub && sudo reboot. Or take another port",
     "busy: the kernel's console is on this port; take another port, or console={name} out of the kernel's command line"},
    {Obstacle::Login, "login", kBlocks, ExitCode::Busy, "a login is on this port: {who}",
     "sudo systemctl mask --now serial-getty@{name}.service", "",
     "busy: a login is on this port, {who}; 'sudo systemctl mask --now serial-getty@{name}.service' ends it"},
    {Obstacle::Held, "held", kBlocks, ExitCode::Busy, "held by {who}", "kill {pid}", "or close it there, or wait", kBusy},
    {Obstacle::HeldByHidden, "held", kBlocks, ExitCode::Busy, "held by a program that is hidden from this user",
     "sudo fuser -v {node}", "names it", kBusyHidden},
    {Obstacle::Locked, "locked", kBlocks, ExitCode::Busy, "locked by {who}", "kill {pid}", "or close it there, or wait",
     kBusy},
    {Obstacle::LockedByHidden, "locked", kBlocks, ExitCode::Busy, "locked by a program outside this container or hidden",
     "sudo fuser -v {node}", "names it", kBusyHidden},
    {Obstacle::LockFile, "lock-file", kBlocks, ExitCode::Busy, "locked by {who}, with a lock file in /var/lock",
     "kill {pid}", "or close it there, or wait", kBusy},
    {Obstacle::Claimed, "claimed", kBlocks, ExitCode::Busy, "claimed by {who}", "kill {pid}", "or close it there, or wait",
     kBusy},
    {Obstacle::ClaimedByHidden, "claimed", kBlocks, ExitCode::Busy, "claimed by a program that is hidden from this user",
     "sudo fuser -v {node}", "names it", kBusyHidden},
    {Obstacle::ForeignDriver, "foreign-driver", kBlocks, ExitCode::Busy, "the system's driver {driver} has it",
     "vectorix ports", "shows whether that made a serial port of it; print with --port then",
     "busy: the system's driver {driver} has it; if that made a serial port of it, print with --port"},
    {Obstacle::DriverMissing, "driver-missing", kBlocks, ExitCode::Missing,
     "a serial adapter, but no serial port: its driver {driver} is not loaded", "sudo modprobe {driver}",
     "when the kernel has no such module, install the full one (on Debian linux-image-amd64, not the one for clouds)"},
    {Obstacle::NoPortMade, "no-port-made", kBlocks, ExitCode::Missing,
     "a serial adapter, but its driver {driver} has made no serial port of it", "sudo dmesg | tail",
     "says why, after plugging it in again"},
    {Obstacle::BrlttyHolds, "brltty-holds", kBlocks, ExitCode::Busy,
     "brltty, for braille displays, has taken the adapter: there is no serial port", "sudo systemctl disable --now brltty",
     "only when nobody reads with it here; plug the adapter in again after it"},
    {Obstacle::BrlttyRule, "brltty-rule", kMayBlock, ExitCode::Done,
     "brltty's rules ({file}) take this adapter for a braille display",
     "sudo ln -sf /dev/null /etc/udev/rules.d/{file} && sudo udevadm control --reload",
     "only when nobody reads with one here; plug the adapter in again after it"},
    {Obstacle::ModemManager, "modem-manager", kMayBlock, ExitCode::Done,
     "ModemManager runs, and asks such an adapter whether it is a modem: the plotter gets that to draw",
     "echo 'SUBSYSTEM==\"tty\", ATTRS{{idVendor}}==\"{vendor}\", ATTRS{{idProduct}}==\"{product}\", "
     "ENV{{ID_MM_PORT_IGNORE}}=\"1\"' | sudo tee /etc/udev/rules.d/79-plotter-{vendor}-{product}.rules && sudo udevadm "
     "control --reload && sudo udevadm trigger --action=add",
     "plug the adapter in again after it"},
    {Obstacle::ModemManagerNear, "modem-manager-near", kNote, ExitCode::Done,
     "ModemManager runs; today's versions leave such an adapter alone, old ones ask it whether it is a modem",
     "echo 'SUBSYSTEM==\"tty\", ATTRS{{idVendor}}==\"{vendor}\", ATTRS{{idProduct}}==\"{product}\", "
     "ENV{{ID_MM_PORT_IGNORE}}=\"1\"' | sudo tee /etc/udev/rules.d/79-plotter-{vendor}-{product}.rules && sudo udevadm "
     "control --reload && sudo udevadm trigger --action=add",
     "keeps every version off"},
    {Obstacle::PrintQueue, "print-queue", kMayBlock, ExitCode::Done, "the print queue {queue} sends to it: {uri}",
     "sudo cupsdisable {queue}", "while the plotter is used; 'sudo cupsenable {queue}' after it"},
    {Obstacle::NotLikeAPlotter, "not-like-a-plotter", kMayBlock, ExitCode::Done,
     "does not look like a plotter: no bulk out endpoint on a printer's interface or of a known maker", "vectorix plotters",
     "shows those that do"},
    {Obstacle::OpenAsWell, "open-as-well", kNote, ExitCode::Done, "open in {who} as well, but not claimed", "", "",
     "{who} has the plotter open as well"},
    {Obstacle::PrinterDriver, "printer-driver", kNote, ExitCode::Done,
     "the system's printer driver usblp has it; it is put aside for a job, and given back", "", "",
     "the system's printer driver usblp is put aside for this job"},
    {Obstacle::PrinterDriverLost, "printer-driver-lost", kNote, ExitCode::Done,
     "the system's printer driver usblp has been taken from it and not given back, as by a job that was killed",
     "echo -n {interface} | sudo tee /sys/bus/usb/drivers/usblp/bind", "or print to it: the next job gives it back"},
    {Obstacle::NoWires, "no-wires", kNote, ExitCode::Done,
     "a pseudo-terminal has no modem lines: --handshake hardware holds nothing back there", "", ""},
    {Obstacle::LinesDown, "lines-down", kNote, ExitCode::Done,
     "CTS is down (up: {lines}): the plotter is off, or the cable has no such wire; --handshake hardware would send nothing",
     "", "--handshake xonxoff needs no such wire"},
    {Obstacle::HiddenProcesses, "hidden-processes", kNote, ExitCode::Done,
     "what {count} processes of other users have open cannot be seen: one of them may hold a port", "sudo vectorix doctor",
     "sees them"},
    {Obstacle::HiddenQueues, "hidden-queues", kNote, ExitCode::Done, "the print queues cannot be seen: {reason}",
     "sudo vectorix doctor", "sees them"},
    {Obstacle::Container, "container", kNote, ExitCode::Done,
     "this is a container: rules, drivers and other programs are those of the machine around it, and are mended there", "",
     ""},
};

constexpr bool isInOrder() {
    for (size_t i = 0; i < std::size(kRows); ++i) {
        if (static_cast<size_t>(kRows[i].obstacle) != i) return false;
    }
    return std::size(kRows) == static_cast<size_t>(Obstacle::Container) + 1;
}
static_assert(isInOrder(), "a row for each obstacle, in their order");

std::string filled(const char *text, const Words &words, std::string (*safe)(const std::string &)) {
    fmt::dynamic_format_arg_store<fmt::format_context> values;
    for (const auto &[name, value] : words)
        values.push_back(fmt::arg(name, safe(value)));
    return fmt::vformat(text, values);
}

std::string printable(const std::string &text) { return shown(text); }

} // namespace

const char *severityText(Severity severity) {
    constexpr const char *kTexts[] = {"note", "may be in the way", "in the way"};
    return kTexts[static_cast<int>(severity)];
}

Found found(Obstacle obstacle, const Words &words) {
    const Row &row = kRows[static_cast<size_t>(obstacle)];
    return {row.name,
            row.severity,
            row.code,
            filled(row.text, words, printable),
            filled(row.command, words, shellWord),
            filled(row.then, words, printable),
            filled(row.line, words, printable)};
}

std::string shellWord(const std::string &text) {
    constexpr std::string_view kPlain = "_./:@%+,=-";
    bool isPlain = !text.empty() && text.front() != '-' && std::all_of(text.begin(), text.end(), [&](char c) {
        return std::isalnum(static_cast<unsigned char>(c)) != 0 || kPlain.find(c) != std::string_view::npos;
    });
    if (isPlain) return text;
    std::string word = "'";
    for (char c : text)
        word += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return shown(word + "'");
}

} // namespace host
