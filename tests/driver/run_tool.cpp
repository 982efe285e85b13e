#include "run_tool.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

#include "file_contents.h"

ToolRun RunTool(const std::vector<std::string>& args, const std::string& cwd, uint64_t addressSpace) {
    ToolRun run;
    std::string outPath = cwd + "/.stdout", errPath = cwd + "/.stderr";
    pid_t pid = fork();
    if (pid == 0) {
        if (chdir(cwd.c_str()) != 0) _exit(127);
        const rlimit limit{addressSpace, addressSpace};
        if (addressSpace != 0 && setrlimit(RLIMIT_AS, &limit) != 0) _exit(127);
        int out = open(outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        int err = open(errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        if (out < 0 || err < 0) _exit(127);
        dup2(out, 1);
        dup2(err, 2);
        std::vector<char*> argv;
        std::string exe = VURL_EXECUTABLE;
        argv.push_back(exe.data());
        for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));  // execv keeps them
        argv.push_back(nullptr);
        execv(exe.c_str(), argv.data());
        _exit(127);
    }
    int status = 0;
    waitpid(pid, &status, 0);
    if (WIFEXITED(status)) run.exitCode = WEXITSTATUS(status);
    if (WIFSIGNALED(status)) run.signal = WTERMSIG(status);
    run.out = testsupport::ReadFileText(outPath);
    run.err = testsupport::ReadFileText(errPath);
    std::filesystem::remove(outPath);
    std::filesystem::remove(errPath);
    return run;
}
