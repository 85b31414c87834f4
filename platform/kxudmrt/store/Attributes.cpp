#include "store/Attributes.h"

#include <kxudm/UDMException.h>

#include <bit>
#include <cstdint>

namespace kxudm::store {
namespace {

constexpr char VERSION = 1;
constexpr std::size_t LARGEST_VARINT = 10;

// --- Writing ---

void PutVarint(std::string& out, std::uint64_t value) {
    while (value >= 0x80) {
        out.push_back(static_cast<char>(value | 0x80));
        value >>= 7;
    }
    out.push_back(static_cast<char>(value));
}

void PutText(std::string& out, std::string_view text) {
    PutVarint(out, text.size());
    out.append(text);
}

template <typename Bits>
void PutFixed(std::string& out, Bits bits) {
    for (std::size_t i = 0; i < sizeof(Bits); ++i) {
        out.push_back(static_cast<char>(bits >> (8 * i)));
    }
}

std::uint64_t ZigZag(std::int64_t value) {
    return (static_cast<std::uint64_t>(value) << 1) ^ static_cast<std::uint64_t>(value >> 63);
}

std::int64_t UnZigZag(std::uint64_t value) {
    return static_cast<std::int64_t>(value >> 1) ^ -static_cast<std::int64_t>(value & 1);
}

std::size_t VarintSize(std::uint64_t value) {
    return value == 0 ? 1 : (static_cast<std::size_t>(std::bit_width(value)) + 6) / 7;
}

// A value's length stands before it; all but a list know theirs without being written.
void PutValue(std::string& out, const kxString& name, const kxVariant& value) {
    out.push_back(static_cast<char>(value.GetKind()));
    switch (value.GetKind()) {
        case kxVariant::EMPTY:
            PutVarint(out, 0);
            return;
        case kxVariant::BOOLEAN:
            PutVarint(out, 1);
            out.push_back(value.GetBoolean() ? 1 : 0);
            return;
        case kxVariant::INTEGER: {
            const std::uint64_t bits = ZigZag(value.GetInteger64());
            PutVarint(out, VarintSize(bits));
            PutVarint(out, bits);
            return;
        }
        case kxVariant::STRING:
            PutText(out, *value.PeekString());
            return;
        case kxVariant::STRINGLIST: {
            const auto& list = *value.PeekStringList();
            std::size_t size = VarintSize(list.size());
            for (const kxString& text : list) {
                size += VarintSize(text.size()) + text.size();
            }
            PutVarint(out, size);
            PutVarint(out, list.size());
            for (const kxString& text : list) {
                PutText(out, text);
            }
            return;
        }
        case kxVariant::FLOAT:
            PutVarint(out, sizeof(std::uint32_t));
            PutFixed(out, std::bit_cast<std::uint32_t>(static_cast<float>(value.GetDouble())));
            return;
        case kxVariant::DOUBLE:
            PutVarint(out, sizeof(std::uint64_t));
            PutFixed(out, std::bit_cast<std::uint64_t>(value.GetDouble()));
            return;
        case kxVariant::POINTER:
            break;
    }
    throw UDMException("attribute '" + name +
                       "' is a pointer, which can't be stored; give it a text, number or list");
}

// --- Reading ---

[[noreturn]] void Damaged(const char* what) {
    throw DamagedAttributes("a revision", what);
}

class Reader {
  public:
    explicit Reader(std::string_view bytes) : bytes_(bytes) {}

    [[nodiscard]] bool AtEnd() const { return bytes_.empty(); }
    [[nodiscard]] std::size_t Left() const { return bytes_.size(); }
    [[nodiscard]] const char* Position() const { return bytes_.data(); }

    unsigned char Byte() {
        if (bytes_.empty()) {
            Damaged("the end is missing");
        }
        const auto byte = static_cast<unsigned char>(bytes_.front());
        bytes_.remove_prefix(1);
        return byte;
    }

    std::uint64_t Varint() {
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < LARGEST_VARINT; ++i) {
            const unsigned char byte = Byte();
            if (i == LARGEST_VARINT - 1 && byte > 1) {
                break;
            }
            value |= static_cast<std::uint64_t>(byte & 0x7f) << (7 * i);
            if (byte < 0x80) {
                return value;
            }
        }
        Damaged("a number is too long");
    }

    std::string_view Text() {
        const std::uint64_t size = Varint();
        if (size > bytes_.size()) {
            Damaged("a length goes beyond the end");
        }
        const std::string_view text = bytes_.substr(0, size);
        bytes_.remove_prefix(size);
        return text;
    }

    template <typename Bits>
    Bits Fixed() {
        Bits bits = 0;
        for (std::size_t i = 0; i < sizeof(Bits); ++i) {
            bits |= static_cast<Bits>(Byte()) << (8 * i);
        }
        return bits;
    }

  private:
    std::string_view bytes_;
};

kxVariant ReadList(Reader& reader) {
    const std::uint64_t count = reader.Varint();
    // Each text takes a byte at least.
    if (count > reader.Left()) {
        Damaged("a list is longer than its bytes");
    }
    kxStlVector<kxString> list;
    list.reserve(count);
    for (std::uint64_t i = 0; i < count; ++i) {
        list.emplace_back(reader.Text());
    }
    return kxVariant(std::move(list));
}

kxVariant ReadKind(unsigned char kind, Reader& reader) {
    switch (kind) {
        case kxVariant::EMPTY:
            return {};
        case kxVariant::BOOLEAN:
            return kxVariant(reader.Byte() != 0);
        case kxVariant::INTEGER:
            return kxVariant(UnZigZag(reader.Varint()));
        case kxVariant::STRINGLIST:
            return ReadList(reader);
        case kxVariant::FLOAT:
            return kxVariant(std::bit_cast<float>(reader.Fixed<std::uint32_t>()));
        case kxVariant::DOUBLE:
            return kxVariant(std::bit_cast<double>(reader.Fixed<std::uint64_t>()));
        default:
            Damaged("a value is of an unknown kind");
    }
}

kxVariant ReadValue(unsigned char kind, std::string_view bytes) {
    if (kind == kxVariant::STRING) {
        return kxVariant(bytes);
    }
    Reader reader(bytes);
    kxVariant value = ReadKind(kind, reader);
    if (!reader.AtEnd()) {
        Damaged("a value is longer than its kind");
    }
    return value;
}

// One attribute as it stands in the bytes.
struct Entry {
    std::string_view name;
    unsigned char kind = 0;
    std::string_view value;
    std::string_view whole;
};

// Walks over the attributes without making values of them.
class Walker {
  public:
    explicit Walker(std::string_view packed) : reader_(packed) {
        if (packed.empty()) {
            return;
        }
        if (reader_.Byte() != static_cast<unsigned char>(VERSION)) {
            Damaged("their format version is unknown");
        }
        left_ = reader_.Varint();
        // Name length, kind and value length take a byte each.
        if (left_ > reader_.Left() / 3) {
            Damaged("there are fewer than their count says");
        }
    }

    [[nodiscard]] std::size_t Count() const { return left_; }

    bool Next(Entry& entry) {
        if (left_ == 0) {
            if (!reader_.AtEnd()) {
                Damaged("bytes are left over");
            }
            return false;
        }
        --left_;
        const char* begin = reader_.Position();
        entry.name = reader_.Text();
        entry.kind = reader_.Byte();
        entry.value = reader_.Text();
        entry.whole = std::string_view(begin, static_cast<std::size_t>(reader_.Position() - begin));
        return true;
    }

  private:
    Reader reader_;
    std::uint64_t left_ = 0;
};

void PutHead(std::string& out, std::size_t count) {
    out.push_back(VERSION);
    PutVarint(out, count);
}

void PutAttribute(std::string& out, const kxString& name, const kxVariant& value) {
    PutText(out, name);
    PutValue(out, name, value);
}

// The last change of a name counts.
const kxVariant* FindChange(const AttributeList& changes, std::string_view name) {
    for (auto change = changes.rbegin(); change != changes.rend(); ++change) {
        if (change->first == name) {
            return &change->second;
        }
    }
    return nullptr;
}

bool IsLastChange(const AttributeList& changes, std::size_t index) {
    return FindChange(changes, changes[index].first) == &changes[index].second;
}

}  // namespace

std::string PackAttributes(const AttributeList& attributes) {
    std::string out;
    if (attributes.empty()) {
        return out;
    }
    out.reserve(32 * attributes.size());
    PutHead(out, attributes.size());
    for (const auto& [name, value] : attributes) {
        PutAttribute(out, name, value);
    }
    return out;
}

AttributeList UnpackAttributes(std::string_view packed) {
    Walker walker(packed);
    AttributeList attributes;
    attributes.reserve(walker.Count());
    for (Entry entry; walker.Next(entry);) {
        attributes.emplace_back(entry.name, ReadValue(entry.kind, entry.value));
    }
    return attributes;
}

bool FindPackedAttribute(std::string_view packed, std::string_view name, kxVariant& value) {
    Walker walker(packed);
    for (Entry entry; walker.Next(entry);) {
        if (entry.name == name) {
            value = ReadValue(entry.kind, entry.value);
            return true;
        }
    }
    return false;
}

std::string MergePackedAttributes(std::string_view packed, const AttributeList& changes) {
    std::string body;
    body.reserve(packed.size() + 32 * changes.size());
    std::vector<bool> used(changes.size(), false);
    std::size_t count = 0;
    Walker walker(packed);
    for (Entry entry; walker.Next(entry); ++count) {
        const kxVariant* change = FindChange(changes, entry.name);
        if (change == nullptr) {
            body.append(entry.whole);
            continue;
        }
        PutAttribute(body, kxString(entry.name), *change);
        for (std::size_t i = 0; i < changes.size(); ++i) {
            used[i] = used[i] || changes[i].first == entry.name;
        }
    }
    for (std::size_t i = 0; i < changes.size(); ++i) {
        if (!used[i] && IsLastChange(changes, i)) {
            PutAttribute(body, changes[i].first, changes[i].second);
            ++count;
        }
    }
    if (count == 0) {
        return {};
    }
    std::string out;
    out.reserve(body.size() + LARGEST_VARINT + 1);
    PutHead(out, count);
    return out.append(body);
}

}  // namespace kxudm::store
