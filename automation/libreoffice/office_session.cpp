// SPDX-License-Identifier: Apache-2.0
#include "automation/libreoffice/office_session.h"

#include <com/sun/star/bridge/UnoUrlResolver.hpp>
#include <com/sun/star/connection/NoConnectException.hpp>
#include <com/sun/star/lang/XMultiComponentFactory.hpp>
#include <com/sun/star/uno/XComponentContext.hpp>
#include <cppuhelper/bootstrap.hxx>
#include <rtl/bootstrap.hxx>

#include "automation/libreoffice/open_document.h"
#include "automation/libreoffice/start_problem.h"
#include "foundation/never_destroyed.h"
#include "foundation/unicode.h"

namespace office {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kPause{20};
/// How long the application may take to leave when it is asked to.
constexpr milliseconds kFarewell{5000};
constexpr int kMostRestarts = 3;

/// The UNO runtime of this process; it is made once, as it can be made only once.
Reference<css::uno::XComponentContext> local_context(const std::string& folder) {
    static foundation::NeverDestroyed<Reference<css::uno::XComponentContext>> context;
    static std::mutex mutex;
    const std::scoped_lock lock(mutex);
    if (!context.get().is()) {
        // Where the types are that the core of the runtime does not have.
        rtl::Bootstrap::set(
            "URE_BOOTSTRAP",
            OUString::fromUtf8(("vnd.sun.star.pathname:" + folder + "/fundamentalrc").c_str()));
        context.get() = cppu::defaultBootstrap_InitialComponentContext();
    }
    return context.get();
}

std::string text_of(const css::uno::Exception& failure) {
    return foundation::unicode::to_utf8(view_of(failure.Message));
}

/// How a process that did not accept a connection has ended, as the end of a sentence.
std::string describe_end(OfficeProcess& process) {
    const std::string words = process.last_words();
    return words.empty() ? "." : ": " + words;
}

} // namespace

OfficeSession::OfficeSession(const OfficeProgram& program) : process_(program) {
    connect(program);
}

OfficeSession::~OfficeSession() {
    end();
}

void OfficeSession::connect(const OfficeProgram& program) {
    const OfficeProcess::Call call(process_);    // watched: it may listen and not answer
    const foundation::PipeSignalBlock no_signal; // for the threads of the connection
    const auto resolver = css::bridge::UnoUrlResolver::create(local_context(program.folder));
    const std::string address =
        "uno:pipe,name=" + process_.pipe_name() + ";urp;StarOffice.ComponentContext";
    int restarts = 0;
    for (;;) {
        try {
            const Reference<css::uno::XComponentContext> context(
                resolver->resolve(OUString::fromUtf8(address.c_str())), css::uno::UNO_QUERY_THROW);
            desktop_.set(context->getServiceManager()->createInstanceWithContext(
                             "com.sun.star.frame.Desktop", context),
                         css::uno::UNO_QUERY_THROW);
            return;
        } catch (const css::connection::NoConnectException&) {
            // It does not listen yet.
        } catch (const css::uno::Exception& failure) {
            if (!process_.has_ended())
                throw StartProblem("LibreOffice does not accept a connection: " + text_of(failure));
        }
        if (!process_.has_ended(kPause)) continue;
        if (process_.is_given_up())
            throw StartProblem("LibreOffice does not answer while it starts; see whether " +
                               program.path + " starts by itself.");
        if (!process_.wants_restart() || ++restarts > kMostRestarts)
            throw StartProblem("LibreOffice has ended while it started" + describe_end(process_));
        process_.restart();
    }
}

void OfficeSession::end() {
    if (!desktop_.is()) return;
    const Reference<css::frame::XDesktop> desktop = std::exchange(desktop_, nullptr);
    documents.clear();
    try {
        const OfficeProcess::Call call(process_);
        if (!process_.has_ended()) desktop->terminate();
    } catch (const css::uno::Exception&) {
        // The connection may break before the reply.
    }
    if (!process_.has_ended(kFarewell)) process_.kill();
}

} // namespace office
