// SPDX-License-Identifier: Apache-2.0
//
// A running application and the connection to it. Objects that serve its members share it; it ends
// with the last of them, or with `end`.
#pragma once

#include <memory>
#include <vector>

#include <com/sun/star/frame/XDesktop.hpp>

#include "automation/libreoffice/office_process.h"
#include "automation/libreoffice/uno_access.h"

namespace office {

class OpenDocument;

class OfficeSession {
  public:
    /// Starts an application and connects to it. Throws StartProblem.
    explicit OfficeSession(const OfficeProgram& program);
    OfficeSession(const OfficeSession&) = delete;
    OfficeSession& operator=(const OfficeSession&) = delete;
    ~OfficeSession();

    bool is_alive() { return desktop_.is() && !process_.has_ended(); }
    OfficeProcess& process() { return process_; }
    const Reference<css::frame::XDesktop>& desktop() const { return desktop_; }
    /// Ends the application, whatever it has open.
    void end();

    /// The documents that are open, in the order of their opening.
    std::vector<std::shared_ptr<OpenDocument>> documents;
    /// What the application would ask its user about; there is nobody to ask.
    bool shows_alerts = true;
    /// The number of the format that new workbooks have.
    std::int32_t default_save_format = 51;

  private:
    void connect(const OfficeProgram& program);

    OfficeProcess process_;
    Reference<css::frame::XDesktop> desktop_;
};

} // namespace office
