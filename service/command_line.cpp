// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "service/command_line.h"

#include <cstring>

namespace {

struct OptionForms
{
    const char *shortForm;
    const char *longForm;
    ServiceOption option;
};

constexpr OptionForms kOptions[] = {
    {"-i", "-install", ServiceOption::Install},     {"-u", "-uninstall", ServiceOption::Uninstall},
    {"-v", "-version", ServiceOption::Version},     {"-e", "-exec", ServiceOption::Exec},
    {"-t", "-terminate", ServiceOption::Terminate}, {"-p", "-pause", ServiceOption::Pause},
    {"-r", "-resume", ServiceOption::Resume},       {"-c", "-command", ServiceOption::Command},
    {"-h", "-help", ServiceOption::Help},
};

} // namespace

ServiceOption serviceOption(const char *argument)
{
    if (!argument)
        return ServiceOption::Run;
    for (const OptionForms &forms : kOptions) {
        if (std::strcmp(argument, forms.shortForm) == 0 || std::strcmp(argument, forms.longForm) == 0)
            return forms.option;
    }
    return ServiceOption::Run;
}

bool wouldServe(int argc, char **argv)
{
    const ServiceOption option = serviceOption(argc > 1 ? argv[1] : nullptr);
    return option == ServiceOption::Run || option == ServiceOption::Exec;
}
