#include "simulator/program/listings.h"

#include "simulator/program/known_names.h"

#include <glib.h>

namespace simulator {
namespace {

constexpr std::size_t kLongestValue = 160;

template <typename Item, typename Text>
std::string Lines(const std::vector<Item>& items, const Text& text, const char* if_empty) {
    std::string lines;
    for (const Item& item : items) {
        lines += text(item) + "\n";
    }
    return items.empty() ? std::string(if_empty) + "\n" : lines;
}

std::string StateName(std::uint8_t state) {
    if (state == kConnected) {
        return "connected";
    }
    return state == kDisconnected ? "disconnected" : "state " + std::to_string(state);
}

std::string Progress(const TransferInfo& transfer) {
    const std::string bytes =
        std::to_string(transfer.transferred) + " of " + std::to_string(transfer.size) + " bytes";
    return transfer.size == 0
               ? bytes
               : bytes + " (" + std::to_string(transfer.transferred * 100 / transfer.size) + "%)";
}

/// Truncates a long text after a complete character.
std::string Cut(const std::string& text) {
    if (text.size() <= kLongestValue) {
        return text;
    }
    const char* end = g_utf8_find_prev_char(text.c_str(), text.c_str() + kLongestValue + 1);
    return text.substr(0, static_cast<std::size_t>(end - text.c_str())) + "...";
}

std::string AnswerText(const Answer& answer) {
    switch (answer.kind) {
        case Answer::Kind::kReply:
            return Cut(answer.body);
        case Answer::Kind::kError:
            return answer.error_name + " " + Cut(answer.body);
        case Answer::Kind::kHangs:
            return "no answer";
        case Answer::Kind::kNotWanted:
            break;
    }
    return "no answer wanted";
}

}  // namespace

std::string ListPhones(const Daemon& daemon) {
    const auto text = [](const PhoneInfo& phone) {
        return phone.path + "  " + phone.address + "  " + phone.name +
               (phone.demands_authentication ? "  (demands user id and password)" : "") +
               (phone.present ? "" : "  (out of reach)");
    };
    return Lines(daemon.Devices(), text, "There are no phones");
}

std::string ListSessions(const Daemon& daemon) {
    const auto text = [](const SessionInfo& session) {
        return session.path + "  " + StateName(session.state) + "  " + session.alias + "  " +
               session.address;
    };
    return Lines(daemon.DescribeSessions(), text, "There are no sessions");
}

std::string ListTransfers(const Daemon& daemon) {
    const auto text = [](const TransferInfo& transfer) {
        return transfer.path + "  " + transfer.status + "  " + Progress(transfer) + "  " +
               transfer.file;
    };
    return Lines(daemon.DescribeTransfers(), text, "There are no transfers");
}

std::string ListCalls(const Daemon& daemon) {
    return Lines(
        daemon.Calls(), [](const Call& call) { return Describe(call); }, "No calls have arrived");
}

std::string LogLine(const Answer& answer) {
    const Call& call = answer.call;
    const std::string object = call.path == "/" ? call.path : LastPart(call.path, '/');
    return object + " " + LastPart(call.interface, '.') + "." + call.method + Cut(call.body) +
           " -> " + AnswerText(answer) + (answer.fault.empty() ? "" : "  (" + answer.fault + ")") +
           "\n";
}

}  // namespace simulator
