// Jobs as documents of the user, named "*.melvane".
#pragma once

#include <string>

#include "job/job_text.h"
#include "platform/documents.h"
#include "settings/modLang.h"

namespace melvane {

inline constexpr const char* kJobExtension = ".melvane";

// By its name, in letters of any case.
bool isJobFile(const std::string& path);

// Both wait for the disk; any thread.

// Throws JobError.
Job readJobFile(Documents& documents, const std::string& path);
// 0, or the error number (<cerrno>).
int writeJobFile(Documents& documents, const std::string& path, const Job& job);

// What the user is told of a document that can't be opened.
std::string jobMessage(const modLang& language, const JobError& error, const std::string& path);

}  // namespace melvane
