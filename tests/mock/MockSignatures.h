// The function types that the mocks stand in for. GoogleMock's code for each of them is compiled
// once, in MockSignatures.cpp, and not again in every test that includes a mock: there it would
// take longer than everything else. A type that is missing here is compiled everywhere, and nothing
// else is wrong.
#pragma once

#include <gmock/gmock.h>
#include <kxudm/IUDMProfile.h>
#include <kxudm/UDMKXMergeToCatalog.h>
#include <kxudm/spi/IUDMProvider.h>

#define KXCT_MOCK_SIGNATURES(USE)                                                                 \
    USE(kxudm::UDMItemHandle(const kxString&))                                                    \
    USE(kxudm::UDMItemHandle(const kxString&, const kxString&))                                   \
    USE(void(const kxudm::UDMItemHandle&, bool, bool))                                            \
    USE(void(const kxudm::UDMItemHandle&, const kxudm::UDMItemHandle&))                           \
    USE(kxudm::UDMItemHandle(                                                                     \
        const kxString&, const kxString&, const kxudm::UDMItemHandle&, const kxString&))          \
    USE(kxudm::UDMRelationHandle(                                                                 \
        const kxudm::UDMItemHandle&, const kxudm::UDMItemHandle&, const kxString&, bool))         \
    USE(bool(const kxudm::UDMItemHandle&, const kxudm::UDMItemHandle&))                           \
    USE(void(const kxudm::UDMItemHandle&, const kxudm::UDMItemHandle&, const kxString&))          \
    USE(std::size_t(const kxudm::UDMItemHandle&, const kxString&, const kxString&))               \
    USE(void(kxStlVector<kxudm::UDMItemHandle>&,                                                  \
             const kxudm::UDMItemHandle&,                                                         \
             const kxString&,                                                                     \
             const kxString&))                                                                    \
    USE(void(                                                                                     \
        kxStlVector<kxudm::UDMItemHandle>&, const kxudm::UDMItemHandle&, const kxString&, bool))  \
    USE(void(const kxudm::UDMItemHandle&, const kxString&, const kxVariant&))                     \
    USE(void(const kxudm::UDMItemHandle&, const kxString&, bool, bool, bool))                     \
    USE(void(const kxudm::UDMItemHandle&, const kxString&, bool))                                 \
    USE(void(const kxudm::UDMItemHandle&))                                                        \
    USE(void(const kxudm::UDMItemHandle&, const kxString&))                                       \
    USE(void(const kxString&, const kxudm::UDMItemHandle&))                                       \
    USE(std::size_t(kxStlVector<kxudm::UDMItemHandle>&,                                           \
                    const kxString&,                                                              \
                    int,                                                                          \
                    long,                                                                         \
                    long,                                                                         \
                    const kxudm::UDMQuerySettingHandle&,                                          \
                    bool,                                                                         \
                    bool))                                                                        \
    USE(void(boost::shared_ptr<kxudm::IUDMProfileSlot>&))                                         \
    USE(boost::shared_ptr<kxudm::UDMHistoryNode>(const kxudm::UDMItemHandle&))                    \
    USE(kxudm::UDMItemHandle(const kxudm::UDMItemHandle&))                                        \
    USE(void(const kxudm::UDMItemHandle&, kxStlVector<kxudm::UDMGenericDocument>&, bool))         \
    USE(kxudm::AddFileBuilder(const kxudm::UDMItemHandle&))                                       \
    USE(void(const kxudm::UDMItemHandle&, const kxString&, bool, bool))                           \
    USE(void(const kxudm::UDMItemHandle&, const bool&, const bool&, kxStlVector<kxString>&))      \
    USE(void(                                                                                     \
        const kxudm::UDMItemHandle&, const kxString&, kxStlVector<kxString>&, const kxString&))   \
    USE(void(const kxudm::UDMItemHandle&,                                                         \
             const kxString&,                                                                     \
             const bool&,                                                                         \
             const bool&,                                                                         \
             kxStlVector<kxString>&))                                                             \
    USE(void(kxStlVector<kxudm::UDMItemHandle>&, const kxString&))                                \
    USE(void(const kxudm::UDMItemHandle&, bool))                                                  \
    USE(bool(const kxString&))                                                                    \
    USE(bool(const kxString&, const kxStlVector<kxudm::UDMCdefMetaData>&, bool))                  \
    USE(int(const kxStlVector<kxString>&,                                                         \
            const kxStlVector<kxString>&,                                                         \
            const kxString&,                                                                      \
            const kxStlMap<kxString, kxString>&))                                                 \
    USE(void(kxStlVector<kxudm::UDMItemHandle>&, const kxudm::UDMItemHandle&, const kxString&))   \
    USE(void(                                                                                     \
        kxStlVector<kxudm::UDMItemHandle>&, kxStlVector<kxString>&, const kxudm::UDMItemHandle&)) \
    USE(bool(const kxudm::UDMItemHandle&))                                                        \
    USE(void(kxudm::UDMItemHandle&, const kxString&, bool))                                       \
    USE(void(kxudm::UDMItemHandle&, const kxString&))                                             \
    USE(void(kxString&, const kxudm::UDMItemHandle&))                                             \
    USE(void(const kxString&, kxStlVector<kxudm::UDMCdefMetaData>&))                              \
    USE(kxString())                                                                               \
    USE(kxudm::UDMProfileUtils())                                                                 \
    USE(void())                                                                                   \
    USE(void(const kxString&, const kxStlVector<kxString>&, int))                                 \
    USE(void(const kxString&))                                                                    \
    USE(kxStlVector<kxudm::UDMItemHandle>(kxStlVector<kxudm::UDMUID>, bool))                      \
    USE(kxStlVector<kxudm::UDMItemHandle>(const kxStlMap<kxudm::UDMUID, kxStlVector<kxString>>&,  \
                                          bool))                                                  \
    USE(boost::shared_ptr<kxudm::IUDMProfile>(const kxStlMap<kxString, kxVariant>&))              \
    USE(void(const boost::shared_ptr<kxudm::IUDMProfile>&))                                       \
    USE(bool(const kxString&,                                                                     \
             const kxString&,                                                                     \
             const kxString&,                                                                     \
             const kxString&,                                                                     \
             const kxString&,                                                                     \
             const kxString&,                                                                     \
             const kxString&,                                                                     \
             kxString&))                                                                          \
    USE(void(kxStlVector<kxString>&, const kxStlMap<kxString, kxVariant>&, unsigned int))         \
    USE(void(kxStlMap<kxString, kxString>&,                                                       \
             const kxString&,                                                                     \
             const kxStlVector<kxString>&,                                                        \
             const kxStlMap<kxString, kxVariant>&,                                                \
             unsigned int))                                                                       \
    USE(void(                                                                                     \
        kxStlMap<kxString, kxVariant>&, const kxString&, const kxStlMap<kxString, kxVariant>&))   \
    USE(void(kxStlVector<kxString>&, const kxStlMap<kxString, kxVariant>&))                       \
    USE(void(kxStlMap<kxString, kxString>&,                                                       \
             const kxString&,                                                                     \
             const kxStlVector<kxString>&,                                                        \
             const kxStlMap<kxString, kxVariant>&))                                               \
    USE(void(const kxStlMap<kxString, kxVariant>&, const kxString&))                              \
    USE(void(const kxStlMap<kxString, kxVariant>&))                                               \
    USE(void(const kxStlMap<kxString, kxVariant>&, bool, bool))                                   \
    USE(boost::shared_ptr<kxudm::UDMKXMergeToCatalog>(                                            \
        const kxString&,                                                                          \
        const kxString&,                                                                          \
        const boost::shared_ptr<kxudm::IUDMProfile>&,                                             \
        const kxString&))                                                                         \
    USE(kxudm::UDMContentDefinitionHandle(const kxString&))                                       \
    USE(kxudm::UDMAttributeDefinitionHandle(const kxString&, const kxString&))                    \
    USE(kxStlVector<kxString>())                                                                  \
    USE(kxStlVector<boost::shared_ptr<kxudm::UDMContentDefinition>>())                            \
    USE(kxStlSet<kxString>())                                                                     \
    USE(void(const kxString&, kxStlVector<kxString>&, const kxString&))

#define KXCT_COMPILED_ELSEWHERE(...) \
    extern template class ::testing::internal::FunctionMocker<__VA_ARGS__>;
KXCT_MOCK_SIGNATURES(KXCT_COMPILED_ELSEWHERE)
#undef KXCT_COMPILED_ELSEWHERE
