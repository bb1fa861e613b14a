#pragma once
// Makes a process current for a scope: a host that keeps several processes alive (one per browser
// tab) runs each one's work inside a scope of its own, and the process current before comes back
// when the scope ends. A scope of nullptr leaves no process current (so that a process made inside
// it does not stay current).

class Process;

class ProcessScope {
public:
    explicit ProcessScope(Process* process);
    ~ProcessScope();
    ProcessScope(const ProcessScope&) = delete;
    ProcessScope& operator=(const ProcessScope&) = delete;

private:
    Process* _saved;
};
