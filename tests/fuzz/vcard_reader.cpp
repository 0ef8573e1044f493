#include "simulator/phone/vcard_reader.h"

#include "fuzz/fuzz.h"
#include "simulator/phone/vcard_writer.h"

#include <glib.h>

#include <algorithm>
#include <string>

namespace morvane_fuzz {
namespace {

using simulator::Card;
using simulator::Property;
using simulator::VcardComplaint;
using simulator::VcardFile;
using simulator::VcardFormat;

bool AreEqual(const Property& left, const Property& right) {
    return left.field == right.field && left.types == right.types &&
           left.components == right.components && left.binary == right.binary;
}

bool AreEqual(const Card& left, const Card& right) {
    return std::equal(left.properties.begin(), left.properties.end(), right.properties.begin(),
                      right.properties.end(),
                      [](const Property& a, const Property& b) { return AreEqual(a, b); });
}

void CheckComplaints(const VcardFile& file, const std::string& text) {
    const std::ptrdiff_t lines = 1 + std::count(text.begin(), text.end(), '\n');
    std::size_t last = 0;
    for (const VcardComplaint& complaint : file.complaints) {
        Require(complaint.line > last && complaint.line <= static_cast<std::size_t>(lines),
                "complaints are in the order of lines that exist", std::to_string(complaint.line));
        last = complaint.line;
    }
}

// vCard 2.1 is ambiguous if a backslash ends a component.
void CheckWritten(const Card& card, VcardFormat format) {
    const std::string text = simulator::WriteVcard(card, format);
    Require(g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr) != FALSE,
            "written text is UTF-8", text);
    const VcardFile file = simulator::ReadVcards(text);
    Require(file.cards.size() == 1 && file.complaints.empty(), "written text can be read", text);
    Require(format == VcardFormat::kVcard21 || AreEqual(file.cards.front(), card),
            "reading written text restores the card", text);
}

}  // namespace

void Check(Input input) {
    const std::string text = input.Rest();
    const VcardFile file = simulator::ReadVcards(text);
    CheckComplaints(file, text);
    for (const Card& card : file.cards) {
        for (const Property& property : card.properties)
            Require(!property.components.empty(), "a property has a component");
        for (const VcardFormat format : {VcardFormat::kVcard21, VcardFormat::kVcard30})
            CheckWritten(card, format);
    }
}

}  // namespace morvane_fuzz
