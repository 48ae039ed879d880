#include "platform/runtime_error.h"

namespace pxscheduler {

RuntimeError InvalidProcedureCall() { return {5, L"Invalid procedure call or argument"}; }
RuntimeError Overflow() { return {6, L"Overflow"}; }
RuntimeError OutOfMemory() { return {7, L"Out of memory"}; }
RuntimeError TypeMismatch() { return {13, L"Type mismatch"}; }
RuntimeError ObjectRequired() { return {424, L"Object required"}; }

RuntimeError FileNotFound(const std::wstring& path) { return {53, L"File not found: " + path}; }
RuntimeError DiskFull(const std::wstring& path) { return {61, L"Disk full: " + path}; }
RuntimeError PermissionDenied(const std::wstring& path) {
  return {70, L"Permission denied: " + path};
}
RuntimeError FileAccessError(const std::wstring& path) {
  return {75, L"Path/File access error: " + path};
}
RuntimeError PathNotFound(const std::wstring& path) { return {76, L"Path not found: " + path}; }
RuntimeError InvalidFileFormat(const std::wstring& detail) {
  return {321, L"Invalid file format: " + detail};
}

RuntimeError ItemNotFound() {
  return {3265,
          L"Item cannot be found in the collection corresponding to the requested name or "
          L"ordinal."};
}
RuntimeError ObjectClosed() {
  return {3704, L"Operation is not allowed when the object is closed."};
}
RuntimeError ConnectionClosed() {
  return {3709,
          L"The connection cannot be used to perform this operation. It is either closed or "
          L"invalid in this context."};
}
RuntimeError NoCurrentRecord() {
  return {3021,
          L"Either BOF or EOF is True, or the current record has been deleted. Requested "
          L"operation requires a current record."};
}

}  // namespace pxscheduler
