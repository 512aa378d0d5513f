#include "platform/qt/TerminationSignals.h"

#include "tests/support/ProgramArguments.h"

#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QFileInfo>
#include <QProcess>

#include <array>
#include <csignal>

#include <sys/types.h>

namespace {

constexpr int deadline = 20000;
constexpr std::array endingSignals{SIGTERM, SIGINT, SIGHUP};

struct TerminationSignalsTest : testing::Test {
    TestSupport::ProgramArguments arguments;
    QCoreApplication application{arguments.count, arguments.values.data()};
    QProcess program;

    void start(const QString& mode) {
        program.setProcessChannelMode(QProcess::MergedChannels);
        program.start(QFileInfo(QStringLiteral("/proc/self/exe")).canonicalPath() + "/SignalProgram", {mode});
        ASSERT_TRUE(program.waitForReadyRead(deadline));
        ASSERT_EQ(program.readLine(), "ready\n");
    }
    /// Lets the program say one thing and end.
    QByteArray outcome(const QString& mode) {
        program.start(QFileInfo(QStringLiteral("/proc/self/exe")).canonicalPath() + "/SignalProgram", {mode});
        EXPECT_TRUE(program.waitForFinished(deadline));
        return program.readAll();
    }
    void send(int signal) const { ASSERT_EQ(kill(static_cast<pid_t>(program.processId()), signal), 0); }
    void finish() {
        const bool isFinished = program.waitForFinished(deadline);
        if (!isFinished) {
            program.kill();
            program.waitForFinished();
        }
        ASSERT_TRUE(isFinished);
    }
    void expectCleanEnd(int signal) {
        finish();
        EXPECT_EQ(program.exitStatus(), QProcess::NormalExit) << signal;
        EXPECT_EQ(program.exitCode(), 0) << signal;
        EXPECT_EQ(program.readAll(), "asked to end\nended\n") << signal;
    }
};

TEST_F(TerminationSignalsTest, EachLeadsToACleanEnd) {
    for (const int signal : endingSignals) {
        start(QStringLiteral("main"));
        send(signal);
        expectCleanEnd(signal);
    }
}

TEST_F(TerminationSignalsTest, AnyThreadMayReceiveThem) {
    for (const int signal : endingSignals) {
        start(QStringLiteral("threads"));
        send(signal);
        expectCleanEnd(signal);
    }
}

TEST_F(TerminationSignalsTest, WithoutASubscriptionTheyEndTheProgramAtOnce) {
    for (const int signal : endingSignals) {
        start(QStringLiteral("ended"));
        send(signal);
        finish();
        EXPECT_EQ(program.exitStatus(), QProcess::CrashExit);
        EXPECT_EQ(program.exitCode(), signal);
        EXPECT_EQ(program.readAll(), "");
    }
}

TEST_F(TerminationSignalsTest, AHangUpThatWasIgnoredStaysIgnored) {
    EXPECT_EQ(outcome(QStringLiteral("nohup")), "ignored\n");
}

TEST_F(TerminationSignalsTest, OneThatNobodyIsToldOfIsPending) {
    EXPECT_EQ(outcome(QStringLiteral("late")), "pending\n");
}

TEST_F(TerminationSignalsTest, WhatIsInterruptedKeepsItsErrorNumber) {
    EXPECT_EQ(outcome(QStringLiteral("errno")), "kept\n");
}

} // namespace
