#pragma once

#include <future>
#include <string>

#include "artefact/secured_bl1.h"
#include "base/bytes.h"

/// SHA-1, in hexadecimal digits, of the first-stage code as a device with these fuses runs it;
/// empty when the scheme encrypts code and this is no whole number of cipher blocks. The image is
/// only read.
std::string opened_code_sha1(const SecuredBl1& bl1, ByteView efuse);

/// The same beside what the caller does meanwhile, or in get() when there is no thread to be had.
/// The arguments outlive the result.
std::future<std::string> start_opened_code_sha1(const SecuredBl1& bl1, ByteView efuse);
