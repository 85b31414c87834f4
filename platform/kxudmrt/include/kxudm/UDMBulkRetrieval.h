// The files of many entities at once, each entity's into a folder of its own: a whole model, or all
// that a library holds.
//
//     UDMBulkRetrieval retrieval(profile);
//     for (const UDMItemHandle& content : contents) {
//         retrieval.Add(content, folderOf(content));
//     }
//     kxStlVector<kxString> paths;
//     retrieval.Run(paths);
//
// It does what RetrieveFilesToFolder does for each, but all or nothing over all of them, and
// faster: the files are read, decompressed, verified and written by a few threads, which end with
// the call and never call the host. An installed progress listener is called on the calling thread,
// for many files now and then instead of for each one.
#pragma once

#include <kxudm/UDMItemHandle.h>
#include <kxudmrt/kxudmrt_export.h>
#include <kxutl/kxStlVector.h>
#include <kxutl/kxString.h>

#include <boost/smart_ptr/shared_ptr.hpp>
#include <vector>

namespace kxudm {

class IUDMProfile;

namespace spi {
class IBulkRetrieval;
}

// One entity of a bulk retrieval.
struct UDMRetrieved {
    UDMItemHandle handle;
    kxString folder;
    bool withChildren = false;
};

class KXUDMRT_EXPORT UDMBulkRetrieval {
  public:
    // Throws UDMNotSupportedException if the session's data source can't do it. Shares ownership of
    // the session.
    explicit UDMBulkRetrieval(const boost::shared_ptr<IUDMProfile>& profile);

    // What Run is to retrieve: the documents of this revision into `folder`, which is made with its
    // parents if it is missing; with children: those of owned children, at any depth, too. Nothing
    // is checked yet. Two entities may share a folder.
    void Add(const UDMItemHandle& handle, const kxString& folder, bool withChildren = false);
    [[nodiscard]] std::size_t Count() const { return _wanted.size(); }

    // Writes all files, then forgets what was added. A file that is there and equal is left alone,
    // one that differs is replaced if `overwrite`, else an error. Appends the absolute paths in the
    // order of Add, and by name within. Throws what RetrieveFilesToFolder throws, and
    // UDMException where two different documents would meet under one path; then, and when it is
    // cancelled (UDMCancelledException), every folder is as it was and what was added stays.
    void Run(kxStlVector<kxString>& paths, bool overwrite = false);

  private:
    boost::shared_ptr<IUDMProfile> _profile;
    spi::IBulkRetrieval* _source;  // the same object
    std::vector<UDMRetrieved> _wanted;
};

}  // namespace kxudm
