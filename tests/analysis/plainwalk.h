// A second computation of what a lane means, slow and obvious: every tick of it, task by task.
#pragma once

#include <set>
#include <string>

#include "analysis/meanings.h"
#include "analysis/parts.h"

// One line for each run, mark and job, jobs with their parts.
using Account = std::multiset<std::string>;

std::string RunLine(const analysis::Run& run);
std::string MarkLine(const analysis::Mark& mark);
std::string JobLine(const analysis::Job& job);

// What the walk of the library tells.
Account WalkedAccount(const analysis::Lane& lane, const analysis::Conventions& conventions);

// The same from `log` directly; only period and gaps are the lane's.
Account PlainAccount(const analysis::Lane& lane, const tasklog::Log& log,
                     const analysis::Conventions& conventions);
