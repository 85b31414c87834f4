// Input of soapcpp2: the XML binding of the three settings documents, which share one schema. C++
// code includes the generated "kxctH.h" instead of this file.
//
// How to read a field:
//   @T x      an attribute; anything else is a child element
//   0 = ""    the writer leaves the attribute out while the string is empty, the reader sets "" when
//             the document does not have it
//   T *x 0    optional: a null pointer when absent, written when set
//   _XML      a char* that holds literal XML
//
// The order of the fields is the order of the generated classes and of what is written. soapcpp2
// maps "_" of a name to "-", a trailing "_" to nothing; a name in backquotes goes to the wire as is.
#include <vector>
template <class T> class std::vector;

//gsoap kxct schema namespace: http://norvik.invalid/KXCTSETTINGS_v1
//gsoap kxct schema form:      unqualified

class xsd__anyType
{ public:
    _XML         __item;
    struct soap *soap;
};

class xsd__boolean : public xsd__anyType { public: bool        __item; };
class xsd__date_   : public xsd__anyType { public: std::string __item; };
class xsd__int     : public xsd__anyType { public: int         __item; };
class xsd__string  : public xsd__anyType { public: std::string __item; };
class xsd__token_  : public xsd__anyType { public: std::string __item; };
class kxct__path__ : public xsd__anyType { public: std::string __item; };

class kxct__Lookup : public xsd__anyType
{ public:
   @std::string  value 0 = "";
};

class kxct__Metadata : public xsd__anyType
{ public:
   @std::string  name 0 = "";
   @std::string  displayname 0 = "";
   @std::string *description 0;
   @std::string *category 0;
   @bool        *common 0;
   @bool        *iseditable 0;
   @bool        *ishidden 0;
};

class kxct__metadata : public xsd__anyType
{ public:
   @std::string  name 0 = "";
   @std::string  value 0 = "";
};

class kxct__category : public xsd__anyType
{ public:
   @std::string  path 0 = "";
};

class kxct__folder : public xsd__anyType
{ public:
   @std::string  path 0 = "";
};

class kxct__Key : public xsd__anyType
{ public:
    std::vector<kxct__Key*>    Key 0;
    std::vector<kxct__Lookup*> Lookup 0;
   @std::string  name 0 = "";
   @std::string *value 0;
};

class kxct__ContentDefinition : public xsd__anyType
{ public:
    std::vector<kxct__Metadata*> Metadata 0;
   @std::string  name 0 = "";
};

class kxct__Entity : public xsd__anyType
{ public:
    std::vector<kxct__metadata*> metadata 0;
    std::vector<kxct__category*> category 0;
    kxct__folder *folder 0;
   @std::string  type 0 = "";
   @std::string  id 0 = "";
   @std::string *libraryentityid 0;
   @std::string *libraryname 0;
   @std::string *librarycomment 0;
   @int         *color 0;
};

class _kxct__Settings
{ public:
    std::vector<kxct__Key*> Key 0;
   @std::string  version 0 = "";
    struct soap *soap;
};

class _kxct__PASettings
{ public:
    std::vector<kxct__ContentDefinition*> ContentDefinition 0;
   @std::string  version 0 = "";
    struct soap *soap;
};

class _kxct__NorvikLibraryInfo
{ public:
    std::vector<kxct__Entity*> Entity 0;
   @std::string  version 0 = "";
   @std::string  kx_info `kx_info` 0 = "";
   @std::string *date 0;
    struct soap *soap;
};
