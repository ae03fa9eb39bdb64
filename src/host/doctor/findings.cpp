// The table is long because there is one row for each finding.
#include "host/doctor/findings.h"

#include "host/terminal/text.h"

#include <algorithm>
#include <cctype>
#include <fmt/args.h>
#include <fmt/format.h>

namespace host {

namespace {

struct Row {
    Finding finding;
    const char *name;
    Severity severity;
    ExitCode code;
    const char *text, *command, *then;
};

constexpr auto kNote = Severity::Note;
constexpr auto kMayBlock = Severity::MayBlock;
constexpr auto kBlocks = Severity::Blocks;

constexpr Row kRows[] = {
    {Finding::NothingFound, "nothing-found", kBlocks, ExitCode::Missing, "no serial port and no USB plotter found",
     "sudo dmesg | tail",
     "right after plugging it in: when nothing new is there, change the cable (one that only charges has no data wires) "
     "or the socket, and see that the plotter is on"},
    {Finding::NoSuchPort, "no-such-port", kBlocks, ExitCode::Missing, "there is no {port}", "vectorix ports",
     "lists those that there are; when it is not among them, change the cable: one that only charges has no data wires"},
    {Finding::NotSerial, "not-serial", kBlocks, ExitCode::Missing, "{port} is {what}, not a serial port", "vectorix ports",
     "lists the serial ports"},
    {Finding::NoHardware, "no-hardware", kBlocks, ExitCode::Missing, "there is no hardware behind the slot {port}",
     "vectorix ports", "lists the ports that there are"},
    {Finding::NoSuchPlotter, "no-such-plotter", kBlocks, ExitCode::Missing, "no such USB plotter is connected", "lsusb",
     "shows what is; when the plotter is not there, change the cable (one that only charges has no data wires), and see "
     "that it is on. One with a serial cable or adapter is looked at with --port"},
    {Finding::NoNode, "no-node", kBlocks, ExitCode::Missing, "the system knows the device, but there is no {node}",
     "sudo udevadm trigger --action=add && sudo udevadm settle", "or plug it in again"},
    {Finding::NoNodeInContainer, "no-node-in-container", kBlocks, ExitCode::Missing,
     "this container has not been given {node}", "docker run --device={node} ...",
     "start it anew so; other container programs have the like"},
    {Finding::NotInGroup, "not-in-group", kBlocks, ExitCode::Permission,
     "permission denied ({rights}); {user} is not in the group {group}", "sudo usermod -aG {group} {user}",
     "log in anew after it"},
    {Finding::NotInSession, "not-in-session", kBlocks, ExitCode::Permission,
     "permission denied ({rights}); {user} is in the group {group}, but this session began before that", "newgrp {group}",
     "for this terminal, or log in anew for all"},
    {Finding::RootOnlyPort, "root-only", kBlocks, ExitCode::Permission,
     "permission denied ({rights}); the system keeps the port to its owner",
     "sudo chgrp dialout {node} && sudo chmod 660 {node}",
     "gives it to the group dialout until the system makes it anew; a udev rule makes that last"},
    {Finding::NoUsbRules, "no-usb-rules", kBlocks, ExitCode::Permission,
     "permission denied ({rights}); the rules that give plotters to people are not installed",
     "sudo cp packaging/udev/70-orb-vectorix.rules /etc/udev/rules.d/ && sudo udevadm control --reload && sudo udevadm "
     "trigger --action=add",
     "plug the plotter in again after it; the rules give it to the person at the machine and to the group lp"},
    {Finding::NoRuleForVendor, "no-rule-for-vendor", kBlocks, ExitCode::Permission,
     "permission denied ({rights}); no rule gives devices of the vendor {vendor} to people",
     "echo 'SUBSYSTEM==\"usb\", ENV{{DEVTYPE}}==\"usb_device\", ATTR{{idVendor}}==\"{vendor}\", MODE=\"0660\", "
     "GROUP=\"lp\", "
     "TAG+=\"uaccess\"' | sudo tee /etc/udev/rules.d/70-plotter-{vendor}.rules && sudo udevadm control --reload && sudo "
     "udevadm trigger --action=add",
     "plug the plotter in again after it"},
    {Finding::RulesNotApplied, "rules-not-applied", kBlocks, ExitCode::Permission,
     "permission denied ({rights}); {file} gives the plotter to people, but was not there when it was plugged in",
     "sudo udevadm control --reload && sudo udevadm trigger --action=add", "or plug the plotter in again"},
    {Finding::Console, "console", kBlocks, ExitCode::Busy, "the kernel's console is on this port: it writes there",
     "sudoedit /etc/default/grub",
     "take console={name} out of it, then: sudo update-grub && sudo reboot. Or take another port"},
    {Finding::Login, "login", kBlocks, ExitCode::Busy, "a login is on this port: {who}",
     "sudo systemctl mask --now serial-getty@{name}.service", ""},
    {Finding::Held, "held", kBlocks, ExitCode::Busy, "held by {who}", "kill {pid}", "or close it there, or wait"},
    {Finding::Locked, "locked", kBlocks, ExitCode::Busy, "locked by {who}", "kill {pid}", "or close it there, or wait"},
    {Finding::LockedByHidden, "locked", kBlocks, ExitCode::Busy, "locked by a program outside this container or hidden",
     "sudo fuser -v {node}", "names it"},
    {Finding::LockFile, "lock-file", kBlocks, ExitCode::Busy, "locked by {who}, with a lock file in /var/lock", "kill {pid}",
     "or close it there, or wait"},
    {Finding::Claimed, "claimed", kBlocks, ExitCode::Busy, "claimed by {who}", "kill {pid}", "or close it there, or wait"},
    {Finding::ClaimedByHidden, "claimed", kBlocks, ExitCode::Busy, "claimed by a program that is hidden from this user",
     "sudo fuser -v {node}", "names it"},
    {Finding::ForeignDriver, "foreign-driver", kBlocks, ExitCode::Busy, "the system's driver {driver} has it",
     "vectorix ports", "shows whether that made a serial port of it; print with --port then"},
    {Finding::DriverMissing, "driver-missing", kBlocks, ExitCode::Missing,
     "a serial adapter, but no serial port: its driver {driver} is not loaded", "sudo modprobe {driver}",
     "when the kernel has no such module, install the full one (on Debian linux-image-amd64, not the one for clouds)"},
    {Finding::NoPortMade, "no-port-made", kBlocks, ExitCode::Missing,
     "a serial adapter, but its driver {driver} has made no serial port of it", "sudo dmesg | tail",
     "says why, after plugging it in again"},
    {Finding::BrlttyHolds, "brltty-holds", kBlocks, ExitCode::Busy,
     "brltty, for braille displays, has taken the adapter: there is no serial port", "sudo systemctl disable --now brltty",
     "only when nobody reads with it here; plug the adapter in again after it"},
    {Finding::BrlttyRule, "brltty-rule", kMayBlock, ExitCode::Done,
     "brltty's rules ({file}) take this adapter for a braille display",
     "sudo ln -sf /dev/null /etc/udev/rules.d/{file} && sudo udevadm control --reload",
     "only when nobody reads with one here; plug the adapter in again after it"},
    {Finding::ModemManager, "modem-manager", kMayBlock, ExitCode::Done,
     "ModemManager runs, and asks such an adapter whether it is a modem: the plotter gets that to draw",
     "echo 'SUBSYSTEM==\"tty\", ATTRS{{idVendor}}==\"{vendor}\", ATTRS{{idProduct}}==\"{product}\", "
     "ENV{{ID_MM_PORT_IGNORE}}=\"1\"' | sudo tee /etc/udev/rules.d/79-plotter-{vendor}-{product}.rules && sudo udevadm "
     "control --reload && sudo udevadm trigger --action=add",
     "plug the adapter in again after it"},
    {Finding::ModemManagerNear, "modem-manager-near", kNote, ExitCode::Done,
     "ModemManager runs; today's versions leave such an adapter alone, old ones ask it whether it is a modem",
     "echo 'SUBSYSTEM==\"tty\", ATTRS{{idVendor}}==\"{vendor}\", ATTRS{{idProduct}}==\"{product}\", "
     "ENV{{ID_MM_PORT_IGNORE}}=\"1\"' | sudo tee /etc/udev/rules.d/79-plotter-{vendor}-{product}.rules && sudo udevadm "
     "control --reload && sudo udevadm trigger --action=add",
     "keeps every version off"},
    {Finding::PrintQueue, "print-queue", kMayBlock, ExitCode::Done, "the print queue {queue} sends to it: {uri}",
     "sudo cupsdisable {queue}", "while the plotter is used; 'sudo cupsenable {queue}' after it"},
    {Finding::NotLikeAPlotter, "not-like-a-plotter", kMayBlock, ExitCode::Done,
     "does not look like a plotter: no bulk out endpoint on a printer's interface or of a known maker", "vectorix plotters",
     "shows those that do"},
    {Finding::OpenAsWell, "open-as-well", kNote, ExitCode::Done, "open in {who} as well, but not claimed", "", ""},
    {Finding::PrinterDriver, "printer-driver", kNote, ExitCode::Done,
     "the system's printer driver usblp has it; it is put aside for a job, and given back", "", ""},
    {Finding::PrinterDriverLost, "printer-driver-lost", kNote, ExitCode::Done,
     "the system's printer driver usblp has been taken from it and not given back, as by a job that was killed",
     "echo -n {interface} | sudo tee /sys/bus/usb/drivers/usblp/bind", "or print to it: the next job gives it back"},
    {Finding::NoWires, "no-wires", kNote, ExitCode::Done,
     "a pseudo-terminal has no modem lines: --handshake hardware holds nothing back there", "", ""},
    {Finding::LinesDown, "lines-down", kNote, ExitCode::Done,
     "CTS is down (up: {lines}): the plotter is off, or the cable has no such wire; --handshake hardware would send nothing",
     "", "--handshake xonxoff needs no such wire"},
    {Finding::HiddenProcesses, "hidden-processes", kNote, ExitCode::Done,
     "what {count} processes of other users have open cannot be seen: one of them may hold a port", "sudo vectorix doctor",
     "sees them"},
    {Finding::HiddenQueues, "hidden-queues", kNote, ExitCode::Done, "the print queues cannot be seen: {reason}",
     "sudo vectorix doctor", "sees them"},
    {Finding::Container, "container", kNote, ExitCode::Done,
     "this is a container: rules, drivers and other programs are those of the machine around it, and are mended there", "",
     ""},
};

constexpr bool isInOrder() {
    for (size_t i = 0; i < std::size(kRows); ++i) {
        if (static_cast<size_t>(kRows[i].finding) != i) return false;
    }
    return std::size(kRows) == static_cast<size_t>(Finding::Container) + 1;
}
static_assert(isInOrder(), "a row for each finding, in their order");

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

Found found(Finding finding, const Words &words) {
    const Row &row = kRows[static_cast<size_t>(finding)];
    return {row.name,
            row.severity,
            row.code,
            filled(row.text, words, printable),
            filled(row.command, words, shellWord),
            filled(row.then, words, printable)};
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
