// Adds one file to an entity.
//
//     profile->BeginAddFile(handle).setFilePath("/data/model.inp").setIsExternal(false).go();
#pragma once

#include <kxudmrt/kxudmrt_export.h>
#include <kxutl/kxString.h>

#include <functional>

namespace kxudm {

class KXUDMRT_EXPORT AddFileBuilder {
  public:
    // What a provider does with the collected options when `go` is called.
    using Action = std::function<void(const kxString& path, bool external)>;

    explicit AddFileBuilder(Action action);
    AddFileBuilder(const AddFileBuilder&);
    AddFileBuilder& operator=(const AddFileBuilder&);
    virtual ~AddFileBuilder();

    virtual AddFileBuilder& setFilePath(const kxString& path);
    // External: the file is recorded by path, size and time only. False at first.
    virtual AddFileBuilder& setIsExternal(bool external);
    // Performs the addition. Throws what the provider throws; the entity is then unchanged.
    virtual void go();

  private:
    Action _action;
    kxString _path;
    bool _external = false;
};

}  // namespace kxudm
