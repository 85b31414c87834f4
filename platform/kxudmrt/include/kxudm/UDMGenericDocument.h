// One file of an entity.
#pragma once

#include <kxutl/kxString.h>

#include <cstdint>
#include <utility>

namespace kxudm {

class UDMGenericDocument {
  public:
    UDMGenericDocument() = default;
    UDMGenericDocument(kxString name,
                       kxString path,
                       kxString type,
                       kxString lastModified,
                       std::int32_t size,
                       bool isText)
        : _name(std::move(name)),
          _path(std::move(path)),
          _type(std::move(type)),
          _lastModified(std::move(lastModified)),
          _size(size),
          _isText(isText) {}

    const kxString& GetName() const { return _name; }
    const kxString& GetPath() const { return _path; }
    const kxString& GetType() const { return _type; }
    // ISO 8601, UTC.
    const kxString& GetLastmodTime() const { return _lastModified; }
    // Bytes; a file of 2 GiB and more answers the greatest 32-bit number.
    std::int32_t GetSize() const { return _size; }
    bool IsText() const { return _isText; }

  private:
    kxString _name;
    kxString _path;
    kxString _type;
    kxString _lastModified;
    std::int32_t _size = 0;
    bool _isText = false;
};

}  // namespace kxudm
