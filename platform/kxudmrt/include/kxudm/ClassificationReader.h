// Reads what only classifications have, over a handle.
//
//     auto reader = handle.GetReader<ClassificationReader, UDMItemHandle>();
//     if (reader.IsMaster()) ...
#pragma once

#include <kxudm/UDMItemHandle.h>

namespace kxudm {

class KXUDMRT_EXPORT ClassificationReader {
  public:
    static const char* TypeName() { return "kxudm::ClassificationReader"; }

    ClassificationReader() = default;
    ClassificationReader(const ClassificationReader&) = default;
    ClassificationReader& operator=(const ClassificationReader&) = default;
    ClassificationReader& operator=(const UDMItemHandle& handle);
    virtual ~ClassificationReader();

    // "ClassificationReader".
    virtual kxString GetName() const;
    // True if the handle stands for a classification.
    virtual bool IsSupported() const;
    // True for a master classification; false for another one and where IsSupported is false.
    bool IsMaster() const;

  private:
    UDMItemHandle _handle;
};

}  // namespace kxudm
