// What the prebuilt libgsoap++ expects its user to define. No SOAP message is sent or received
// here, hence no headers, no faults and no elements of unknown type: every hook does nothing.
#include <stdsoap2.h>

int soap_getheader(struct soap*) {
    return SOAP_OK;
}
int soap_putheader(struct soap*) {
    return SOAP_OK;
}
void soap_serializeheader(struct soap*) {}
int soap_getfault(struct soap*) {
    return SOAP_OK;
}
int soap_putfault(struct soap*) {
    return SOAP_OK;
}
void soap_serializefault(struct soap*) {}

namespace {
// The runtime writes through the pointers it gets, from any thread that uses a context.
thread_local const char* discarded = nullptr;

const char** Discard() {
    discarded = nullptr;
    return &discarded;
}
}  // namespace

const char** soap_faultcode(struct soap*) {
    return Discard();
}
const char** soap_faultsubcode(struct soap*) {
    return Discard();
}
const char* soap_fault_subcode(struct soap*) {
    return nullptr;
}
const char** soap_faultstring(struct soap*) {
    return Discard();
}
const char* soap_fault_string(struct soap*) {
    return nullptr;
}
const char** soap_faultdetail(struct soap*) {
    return Discard();
}
const char* soap_fault_detail(struct soap*) {
    return nullptr;
}

extern "C" {
void* soap_getelement(struct soap*, const char*, int*) {
    return nullptr;
}
int soap_putelement(struct soap*, const void*, const char*, int, int) {
    return SOAP_OK;
}
void soap_markelement(struct soap*, const void*, int) {}
void* soap_dupelement(struct soap*, const void*, int) {
    return nullptr;
}
void soap_delelement(const void*, int) {}
}
