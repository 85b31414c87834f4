// The attributes of one revision as one packed BLOB.
//
// Layer: store. All attributes of a revision are read and written with its row; this is the form in
// which they stand there. Format, version 1: the byte 1, the number of attributes, then for each
// its name, its kind (the number of kxVariant::Kind) and its value; name and value each with their
// length in bytes before them, so that a reader can pass over what it does not need. Numbers are
// little endian base-128 varints, integers zigzag encoded, floating values their IEEE bytes in
// little endian order, a list its count and then its texts with their lengths. An empty BLOB is an
// empty list.
//
// Reading never trusts the bytes: what is cut off, overlong or unknown is a DamagedAttributes that
// says so; nothing crashes, and no memory is taken for counts that the bytes don't hold.
#ifndef KXUDMRT_STORE_ATTRIBUTES_H
#define KXUDMRT_STORE_ATTRIBUTES_H

#include <kxudm/UDMException.h>
#include <kxutl/kxString.h>
#include <kxutl/kxVariant.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kxudm::store {

// Names and values in the order in which they were first set. Names are unique.
using AttributeList = std::vector<std::pair<kxString, kxVariant>>;

// Bytes that are no packed attributes. The bytes don't know whose they are: who knows it throws
// this again with the UID.
class DamagedAttributes : public UDMStoreException {
  public:
    DamagedAttributes(const std::string& owner, const std::string& cause)
        : UDMStoreException("the stored attributes of " + owner + " are damaged: " + cause +
                            "; restore the library from a backup"),
          cause_(cause) {}
    [[nodiscard]] const std::string& Cause() const noexcept { return cause_; }

  private:
    std::string cause_;
};

// A pointer has no meaning outside of the process: it is refused with the attribute's name.
[[nodiscard]] std::string PackAttributes(const AttributeList& attributes);

[[nodiscard]] AttributeList UnpackAttributes(std::string_view packed);

// The value of one attribute without unpacking the others; false if it is not there.
bool FindPackedAttribute(std::string_view packed, std::string_view name, kxVariant& value);

// `packed` with `changes` applied: known names keep their place, new ones come last. A change to an
// empty variant keeps the name with an empty value.
[[nodiscard]] std::string MergePackedAttributes(std::string_view packed,
                                                const AttributeList& changes);

}  // namespace kxudm::store

#endif
