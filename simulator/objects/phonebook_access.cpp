#include "simulator/objects/phonebook_access.h"

#include "simulator/objects/handler.h"
#include "simulator/objects/names.h"

#include <algorithm>
#include <array>
#include <filesystem>

namespace simulator {
namespace {

using morvane::Own;
using morvane::VariantPtr;

constexpr char kVcardType[] = "text/x-vcard";
constexpr char kNoTransfer[] = "/";
constexpr std::array<const char*, 3> kLocations = {"int", "sim1", "sim2"};
constexpr guint16 kProfileVersion = 0x0102;
constexpr guchar kAllPhonebooks = 0x0f;
constexpr guint32 kAllFeatures = 0x3ff;

VariantPtr Size(std::size_t size) {
    return Own(g_variant_new("(q)", std::min<std::size_t>(size, G_MAXUINT16)));
}

}  // namespace

PhonebookAccess::PhonebookAccess(World& world, std::shared_ptr<Phone> phone, std::string path,
                                 std::function<bool()> is_connected)
    : world_(world),
      phone_(std::move(phone)),
      path_(std::move(path)),
      is_connected_(std::move(is_connected)),
      skeleton_(obex_phonebook_access1_skeleton_new()) {
    SetConstants();
    HandleMethods();
}

void PhonebookAccess::SetConstants() {
    ObexPhonebookAccess1* skeleton = skeleton_.get();
    obex_phonebook_access1_set_folder(skeleton, "");
    obex_phonebook_access1_set_database_identifier(skeleton, "");
    obex_phonebook_access1_set_primary_counter(skeleton, "");
    obex_phonebook_access1_set_secondary_counter(skeleton, "");
    obex_phonebook_access1_set_fixed_image_size(skeleton, TRUE);
    obex_phonebook_access1_set_profile_version(skeleton, kProfileVersion);
    obex_phonebook_access1_set_supported_phonebooks(skeleton, kAllPhonebooks);
    obex_phonebook_access1_set_supported_features(skeleton, kAllFeatures);
}

void PhonebookAccess::HandleMethods() {
    gpointer skeleton = skeleton_.get();
    Handle<&PhonebookAccess::Select>(skeleton, "handle-select", this);
    Handle<&PhonebookAccess::PullAll>(skeleton, "handle-pull-all", this);
    Handle<&PhonebookAccess::Pull>(skeleton, "handle-pull", this);
    Handle<&PhonebookAccess::List>(skeleton, "handle-list", this);
    Handle<&PhonebookAccess::Search>(skeleton, "handle-search", this);
    Handle<&PhonebookAccess::GetSize>(skeleton, "handle-get-size", this);
    Handle<&PhonebookAccess::GetSizeFiltered>(skeleton, "handle-get-size-phonebook", this);
    Handle<&PhonebookAccess::GetSizeFiltered>(skeleton, "handle-get-size-listing", this);
    Handle<&PhonebookAccess::ListFilterFields>(skeleton, "handle-list-filter-fields", this);
    Handle<&PhonebookAccess::UpdateVersion>(skeleton, "handle-update-version", this);
}

void PhonebookAccess::DemandConnection() const {
    if (!is_connected_()) {
        throw Refusal(kNotConnected, "Session is not connected");
    }
}

const Phonebook& PhonebookAccess::Selected() const {
    DemandConnection();
    const Phonebook* book = phone_->Find(location_, phonebook_);
    if (book == nullptr) {
        throw Refusal(kForbidden, "No phone book selected");
    }
    return *book;
}

VariantPtr PhonebookAccess::Select(const gchar* location, const gchar* phonebook) {
    DemandConnection();
    if (std::find(kLocations.begin(), kLocations.end(), std::string(location)) ==
        kLocations.end()) {
        throw Refusal(kInvalidArguments, std::string("Unknown location: ") + location);
    }
    if (phone_->Find(location, phonebook) == nullptr) {
        throw Refusal(kInvalidArguments,
                      std::string("No such phone book: ") + phonebook + " in " + location);
    }
    location_ = location;
    phonebook_ = phonebook;
    Learn("Folder", g_variant_new_string(Phone::FolderOf(location_, phonebook_).c_str()));
    return nullptr;
}

VariantPtr PhonebookAccess::PullAll(const gchar* target, GVariant* filters) {
    if (world_.pull_content) {
        return StartTransfer("pb.vcf", target, *world_.pull_content);
    }
    const Phonebook& book = Selected();
    const Filters wanted = ParseFilters(filters, FilteredCall::kPullAll);
    std::string content;
    for (const Entry* entry : SelectEntries(book, wanted)) {
        content += WriteVcard(entry->card, wanted.format, wanted.fields);
    }
    Reply reply = StartTransfer(Phone::FolderOf(location_, phonebook_) + ".vcf", target, content);
    LearnMissedCalls(wanted);
    return reply;
}

VariantPtr PhonebookAccess::Pull(const gchar* vcard, const gchar* target, GVariant* filters) {
    if (world_.pull_content) {
        return StartTransfer(vcard, target, *world_.pull_content);
    }
    const Phonebook& book = Selected();
    const Filters wanted = ParseFilters(filters, FilteredCall::kPull);
    const Card& card = FindEntry(book, vcard).card;
    return StartTransfer(vcard, target, WriteVcard(card, wanted.format, wanted.fields));
}

VariantPtr PhonebookAccess::StartTransfer(const std::string& name, const std::string& target,
                                          const std::string& content) {
    if (world_.empty_transfer_path) {
        return Own(g_variant_new("(oa{sv})", kNoTransfer, nullptr));
    }
    transfers_.push_back(std::make_unique<Transfer>(
        world_, world_.next_transfer, path_, Download{name, kVcardType, FileFor(target), content}));
    ++world_.next_transfer;
    const Transfer& transfer = *transfers_.back();
    return Own(g_variant_new("(o@a{sv})", transfer.path().c_str(), transfer.Properties().get()));
}

std::string PhonebookAccess::FileFor(const std::string& target) const {
    const std::filesystem::path asked(target);
    if (!asked.is_absolute() || !asked.has_filename()) {
        throw Refusal(kInvalidArguments, "Not an absolute file name: " + target);
    }
    if (world_.options.directory.empty()) {
        return target;
    }
    return std::filesystem::absolute(world_.options.directory) / asked.filename();
}

VariantPtr PhonebookAccess::List(GVariant* filters) {
    const Phonebook& book = Selected();
    const Filters wanted = ParseFilters(filters, FilteredCall::kList);
    LearnMissedCalls(wanted);
    return Listing(SelectEntries(book, wanted));
}

VariantPtr PhonebookAccess::Search(const gchar* field, const gchar* value, GVariant* filters) {
    const Phonebook& book = Selected();
    const Filters wanted = ParseFilters(filters, FilteredCall::kList);
    const SearchField where = ParseSearchField(field);
    LearnMissedCalls(wanted);
    return Listing(SearchEntries(book, wanted, where, value));
}

VariantPtr PhonebookAccess::Listing(const simulator::Selected& entries) {
    GVariantBuilder listing;
    g_variant_builder_init(&listing, G_VARIANT_TYPE("a(ss)"));
    for (const Entry* entry : entries) {
        g_variant_builder_add(&listing, "(ss)", HandleName(*entry).c_str(),
                              entry->card.ListingName().c_str());
    }
    return Own(g_variant_new("(a(ss))", &listing));
}

VariantPtr PhonebookAccess::GetSize() {
    const Phonebook& book = Selected();
    LearnMissedCalls(Filters());
    return Size(book.size());
}

VariantPtr PhonebookAccess::GetSizeFiltered(GVariant* filters) {
    const Phonebook& book = Selected();
    const Filters wanted = ParseFilters(filters, FilteredCall::kSize);
    LearnMissedCalls(wanted);
    return Size(SelectEntries(book, wanted).size());
}

VariantPtr PhonebookAccess::ListFilterFields() {
    return Own(g_variant_new(
        "(@as)", g_variant_new_strv(kFieldNames.data(), static_cast<gssize>(kFieldNames.size()))));
}

VariantPtr PhonebookAccess::UpdateVersion() {
    DemandConnection();
    Learn("DatabaseIdentifier", g_variant_new_string(phone_->DatabaseIdentifier().c_str()));
    Learn("PrimaryCounter", g_variant_new_string(phone_->PrimaryCounter().c_str()));
    Learn("SecondaryCounter", g_variant_new_string(phone_->SecondaryCounter().c_str()));
    return nullptr;
}

/// Phones report and reset their number of new missed calls only with the histories that contain
/// missed calls.
void PhonebookAccess::LearnMissedCalls(const Filters& filters) {
    if (phonebook_ != "mch" && phonebook_ != "cch") {
        return;
    }
    if (filters.reset_new_missed_calls) {
        phone_->ResetNewMissedCalls();
    }
    Learn("NewMissedCalls", g_variant_new_byte(phone_->NewMissedCalls()));
}

void PhonebookAccess::Learn(const char* name, GVariant* value) {
    VariantPtr learnt = Own(value);
    const VariantPtr known = PropertiesOf(skeleton_.get());
    const VariantPtr old(g_variant_lookup_value(known.get(), name, nullptr));
    if (g_variant_equal(old.get(), learnt.get()) != FALSE) {
        return;
    }
    SetProperty(skeleton_.get(), name, learnt.get());
    if (!world_.options.announce) {
        return;
    }
    learnt_.emplace_back(name, std::move(learnt));
    announcement_.Start(world_.options.announce_delay, [this] {
        AnnounceLearnt();
        return false;
    });
}

/// One signal for each property, in the order in which the changes were received.
void PhonebookAccess::AnnounceLearnt() {
    for (const auto& [name, value] : learnt_) {
        GVariantDict changed;
        g_variant_dict_init(&changed, nullptr);
        g_variant_dict_insert_value(&changed, name.c_str(), value.get());
        world_.bus.EmitChanges(path_, kPhonebookInterface, g_variant_dict_end(&changed));
    }
    learnt_.clear();
}

void PhonebookAccess::AbortTransfers() {
    for (const std::unique_ptr<Transfer>& transfer : transfers_) {
        if (!transfer->IsOver()) {
            transfer->Abort();
        }
    }
}

}  // namespace simulator
