// Questions about the content definitions of a session's library.
//
// A value made by IUDMProfile::GetProfileUtils. It answers from the definitions as they are at the
// time of the question, as long as the session is open. Unknown names throw an exception that
// names them.
#pragma once

#include <kxudm/UDMDefinitionHandles.h>
#include <kxutl/kxStlSet.h>

namespace kxudm {

namespace spi {
class DefinitionSource;
}

class KXUDMRT_EXPORT UDMProfileUtils {
  public:
    explicit UDMProfileUtils(boost::shared_ptr<spi::DefinitionSource> source);
    UDMProfileUtils(const UDMProfileUtils&) = default;
    UDMProfileUtils& operator=(const UDMProfileUtils&) = default;
    ~UDMProfileUtils();

    UDMContentDefinitionHandle GetContentDefinitionHandle(const kxString& definition) const;
    UDMAttributeDefinitionHandle GetAttributeDefinitionHandle(const kxString& definition,
                                                              const kxString& attribute) const;
    // In order of definition, abstract ones among them.
    kxStlVector<kxString> GetRegisteredContentDefinitionNames() const;
    kxStlVector<boost::shared_ptr<UDMContentDefinition>> GetRegisteredContentDefinition() const;
    kxStlSet<kxString> GetRegisteredContentDefinitionClassNames() const;
    // Appends the names of all definitions whose entities may stand in `group` of `definition`:
    // the ones listed there and the ones derived from them, without abstract ones.
    void GetAllowedChildCdefNames(const kxString& definition,
                                  kxStlVector<kxString>& names,
                                  const kxString& group) const;
    // Appends the definition's groups of one category ("owner", "reference", "folder",
    // "category"), in order of definition; those of every category where it is empty.
    void GetGroupNames(const kxString& definition,
                       kxStlVector<kxString>& names,
                       kxString category) const;
    // Name of the definition that claims files with this extension (without the dot, case folded);
    // empty where none does.
    kxString FindContentDefinitionByExtension(const kxString& extension) const;

  private:
    boost::shared_ptr<spi::DefinitionSource> _source;
};

}  // namespace kxudm
