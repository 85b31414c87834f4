#include <kxudmrtxmlbinding/XmlNamespaces.h>
#include <stdsoap2.h>

// The third column is a pattern that is accepted on reading besides the second. The host of the
// last row resolves nowhere by intent: readers match local names, only the path is of interest.
SOAP_NMAC struct Namespace namespaces[] = {
    {"SOAP-ENV",
     "http://schemas.xmlsoap.org/soap/envelope/",
     "http://www.w3.org/*/soap-envelope",
     nullptr},
    {"SOAP-ENC",
     "http://schemas.xmlsoap.org/soap/encoding/",
     "http://www.w3.org/*/soap-encoding",
     nullptr},
    {"xsi",
     "http://www.w3.org/2001/XMLSchema-instance",
     "http://www.w3.org/*/XMLSchema-instance",
     nullptr},
    {"xsd", "http://www.w3.org/2001/XMLSchema", "http://www.w3.org/*/XMLSchema", nullptr},
    {"kxct", "http://norvik.invalid/KXCTSETTINGS_v1", nullptr, nullptr},
    {nullptr, nullptr, nullptr, nullptr}};

const Namespace* kxGetXmlNamespaces() {
    return namespaces;
}
