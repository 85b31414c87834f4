#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <vector>

#include "frwk/_private/Signature.h"

using kxct::SignatureText;

namespace {

struct Spelling {
    const char* declaration;
    const char* text;
};

void ExpectAll(std::initializer_list<Spelling> table) {
    for (const auto& [declaration, text] : table) {
        EXPECT_EQ(SignatureText(declaration), text);
    }
}

}  // namespace

TEST(Signature, AnOperationOverReferencesNamesEachClass) {
    ExpectAll({
        {"void kxct::UDMDBCtrl::AddChild(const kxudm::UDMItemHandle&, const kxudm::UDMItemHandle&, "
         "const kxString&)",
         "void __cdecl kxct::UDMDBCtrl::AddChild(const class kxudm::UDMItemHandle &,const class "
         "kxudm::UDMItemHandle &,const class kxString &)"},
        {"void kxct::UDMDBCtrl::AddReference(kxudm::UDMItemHandle&, const kxudm::UDMItemHandle&, "
         "const kxString&)",
         "void __cdecl kxct::UDMDBCtrl::AddReference(class kxudm::UDMItemHandle &,const class "
         "kxudm::UDMItemHandle &,const class kxString &)"},
    });
}

TEST(Signature, AConstructorHasNoResultTypeAndAMapItsDefaultArguments) {
    ExpectAll({{"kxct::UDMDBCtrl::UDMDBCtrl(const kxStlMap<kxString, kxVariant>&)",
                "__cdecl kxct::UDMDBCtrl::UDMDBCtrl(const class kxStlMap<class kxString,class "
                "kxVariant,struct std::less<class kxString>,class std::allocator<struct "
                "std::pair<class kxString const ,class kxVariant> > > &)"}});
}

TEST(Signature, AVectorHasItsAllocatorAndAnArgumentByValueItsConst) {
    ExpectAll(
        {{"void kxct::UDMDBCtrl::GetParents(kxStlVector<kxudm::UDMItemHandle>&, const "
          "kxudm::UDMItemHandle&, const kxString&, const bool)",
          "void __cdecl kxct::UDMDBCtrl::GetParents(class kxStlVector<class "
          "kxudm::UDMItemHandle,class std::allocator<class kxudm::UDMItemHandle> > &,const "
          "class kxudm::UDMItemHandle &,const class kxString &,const bool)"}});
}

TEST(Signature, AConstOperationEndsInConst) {
    ExpectAll({{"kxString kxct::UDMDBCtrl::GetCdefDisplayName(const kxString&) const",
                "class kxString __cdecl kxct::UDMDBCtrl::GetCdefDisplayName(const class kxString "
                "&) const"}});
}

TEST(Signature, SizesAreSixtyFourBitIntegersAndEnumsAreNamedSo) {
    const char* text =
        "unsigned __int64 __cdecl kxct::UDMDBCtrl::GetLineage(const class kxudm::UDMItemHandle "
        "&,enum kxct::HistoryCategory,class kxStlVector<class kxudm::UDMItemHandle,class "
        "std::allocator<class kxudm::UDMItemHandle> > &)";
    for (const char* size : {"size_t", "std::size_t", "long unsigned int", "unsigned long"}) {
        EXPECT_EQ(SignatureText(std::string(size) +
                                " kxct::UDMDBCtrl::GetLineage(const kxudm::UDMItemHandle&, "
                                "kxct::HistoryCategory, kxStlVector<kxudm::UDMItemHandle>&)"),
                  text);
    }
}

TEST(Signature, RecordsAreNamedAsStruct) {
    ExpectAll({{"bool f(kxStlVector<kxct::Metadata>&, const kxct::DocumentInfo&)",
                "bool __cdecl f(class kxStlVector<struct kxct::Metadata,class "
                "std::allocator<struct kxct::Metadata> > &,const struct kxct::DocumentInfo &)"}});
}

TEST(Signature, StaticIsDroppedAndTheConstOfAResultStays) {
    ExpectAll({
        {"static const bool kxct::UDMDBCtrl::CheckConnection(const kxString&, kxString&)",
         "const bool __cdecl kxct::UDMDBCtrl::CheckConnection(const class kxString &,class "
         "kxString &)"},
        {"virtual bool kxct::UDMDBCtrl::AddFile(kxudm::UDMItemHandle&, const kxString&, bool)",
         "bool __cdecl kxct::UDMDBCtrl::AddFile(class kxudm::UDMItemHandle &,const class kxString "
         "&,bool)"},
    });
}

TEST(Signature, AClassResultIsNamedAsClass) {
    ExpectAll({
        {"kxudm::UDMRelationHandle kxct::UDMDBCtrl::CreateRelation(const kxString&)",
         "class kxudm::UDMRelationHandle __cdecl kxct::UDMDBCtrl::CreateRelation(const class "
         "kxString &)"},
        {"boost::shared_ptr<kxudm::UDMHistoryNode> kxct::UDMDBCtrl::GetHistory(const "
         "kxudm::UDMItemHandle&) const",
         "class boost::shared_ptr<class kxudm::UDMHistoryNode> __cdecl "
         "kxct::UDMDBCtrl::GetHistory(const class kxudm::UDMItemHandle &) const"},
        {"const kxString kxct::MasterDBManagerImpl::GetMasterDBPath()",
         "const class kxString __cdecl kxct::MasterDBManagerImpl::GetMasterDBPath(void)"},
    });
}

TEST(Signature, ATemplateFunctionKeepsItsArguments) {
    ExpectAll(
        {{"kxudm::ClassificationReader "
          "kxudm::UDMHandle::GetReader<kxudm::ClassificationReader, kxudm::UDMItemHandle>()",
          "class kxudm::ClassificationReader __cdecl kxudm::UDMHandle::GetReader<class "
          "kxudm::ClassificationReader,class kxudm::UDMItemHandle>(void)"}});
}

TEST(Signature, MergesArgumentsBeginAsTold) {
    const auto text = SignatureText(
        "void kxct::UDMDBCtrl::Merge(const kxString&, const kxString&, const kxString&, const "
        "kxStlMap<kxString, kxStlVector<kxString>>&, bool, kxStlMap<kxString, kxString>&)");
    EXPECT_EQ(text,
              "void __cdecl kxct::UDMDBCtrl::Merge(const class kxString &,const class kxString "
              "&,const class kxString &,const class kxStlMap<class kxString,class "
              "kxStlVector<class kxString,class std::allocator<class kxString> >,struct "
              "std::less<class kxString>,class std::allocator<struct std::pair<class kxString "
              "const ,class kxStlVector<class kxString,class std::allocator<class kxString> > > > "
              "> &,bool,class kxStlMap<class kxString,class kxString,struct std::less<class "
              "kxString>,class std::allocator<struct std::pair<class kxString const ,class "
              "kxString> > > &)");
}

TEST(Signature, DefaultTemplateArgumentsThatArePresentAreNotDoubled) {
    ExpectAll({{"void f(kxStlVector<kxString, std::allocator<kxString> >&, kxStlSet<int>)",
                "void __cdecl f(class kxStlVector<class kxString,class std::allocator<class "
                "kxString> > &,class kxStlSet<int,struct std::less<int>,class "
                "std::allocator<int> >)"}});
}

TEST(Signature, BuiltInTypesHaveOneSpelling) {
    ExpectAll(
        {{"long int f(unsigned, long long int, long long unsigned int, unsigned char, short "
          "int, double, char)",
          "long __cdecl f(unsigned int,__int64,unsigned __int64,unsigned "
          "char,short,double,char)"}});
}

TEST(Signature, PointersKeepTheirConst) {
    ExpectAll(
        {{"void f(kxString*, const kxString*, kxString* const, void*&, std::vector<void*>&, "
          "kxString&&, kxStlVector<const kxString*>)",
          "void __cdecl f(class kxString *,const class kxString *,class kxString *const "
          ",void *&,class std::vector<void *,class std::allocator<void *> > &,class "
          "kxString &&,class kxStlVector<class kxString const *,class std::allocator<class "
          "kxString const *> >)"}});
}

TEST(Signature, StandardStringsAreWrittenOut) {
    ExpectAll({{"std::string f(const std::string&)",
                "class std::basic_string<char,struct std::char_traits<char>,class "
                "std::allocator<char> > __cdecl f(const class std::basic_string<char,struct "
                "std::char_traits<char>,class std::allocator<char> > &)"}});
}

TEST(Signature, ArgumentNamesAreLeftOut) {
    ExpectAll({{"void f(const bool flag, const kxString& name, kxString text)",
                "void __cdecl f(const bool,const class kxString &,class kxString)"}});
}

TEST(Signature, OperatorsAndDestructorsAreNames) {
    ExpectAll({
        {"kxct::X& kxct::X::operator=(const kxct::X&)",
         "class kxct::X & __cdecl kxct::X::operator=(const class kxct::X &)"},
        {"bool kxct::X::operator<(const kxct::X&) const",
         "bool __cdecl kxct::X::operator<(const class kxct::X &) const"},
        {"kxct::X::~X()", "__cdecl kxct::X::~X(void)"},
    });
}

TEST(Signature, OtherCompilersSpacingGivesTheSameText) {
    ExpectAll({{"kxct::X &kxct::X::f(const kxStlVector<kxStlVector<kxString>> &, void *)",
                "class kxct::X & __cdecl kxct::X::f(const class kxStlVector<class "
                "kxStlVector<class kxString,class std::allocator<class kxString> >,class "
                "std::allocator<class kxStlVector<class kxString,class std::allocator<class "
                "kxString> > > > &,void *)"}});
}

TEST(Signature, ALambdaWithinAnOperationHasTheOperationsName) {
    ExpectAll({{"kxct::X::f(const kxString&) const::<lambda()>",
                "__cdecl kxct::X::f(const class kxString &) const"}});
}

TEST(Signature, ATextThatIsNoDeclarationStaysAsItIs) {
    ExpectAll({{"", ""},
               {"no function", "no function"},
               {"void f(", "void f("},
               {"f)", "f)"},
               {"void f(void (*)(int))", "void f(void (*)(int))"},
               {"void f(kxStlVector<)", "void f(kxStlVector<)"}});
}

namespace kxct_sample {
class Handle {};
class Session {
  public:
    Handle Find(const Handle&, bool, std::vector<Handle>&) const { return _Note(KXCT_SIGNATURE); }
    static std::string text;

  private:
    static Handle _Note(const std::string& signature) {
        text = signature;
        return {};
    }
};
std::string Session::text;
}  // namespace kxct_sample

TEST(Signature, TheMacroNamesTheEnclosingFunction) {
    std::vector<kxct_sample::Handle> out;
    static_cast<void>(kxct_sample::Session().Find({}, true, out));
    EXPECT_EQ(kxct_sample::Session::text,
              "class kxct_sample::Handle __cdecl kxct_sample::Session::Find(const class "
              "kxct_sample::Handle &,bool,class std::vector<class kxct_sample::Handle,class "
              "std::allocator<class kxct_sample::Handle> > &) const");
}
