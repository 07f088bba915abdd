#pragma once
// The About box: the program's name and version, copyright and maker, a
// button that starts the desktop's system-information program, and the
// maker's web site, opened in the browser by a click on its label. Modal;
// listed among the open forms while it exists.
#include <string>
#include <vector>

#include <QDialog>

#include "platform/Control.h"

namespace ui {
class CommandButton;
class Label;
}  // namespace ui

class frmAbout : public QDialog, public ui::Form {
    Q_OBJECT
public:
    explicit frmAbout(QWidget* parent = nullptr);
    ~frmAbout() override;

    std::string formName() const override { return "frmAbout"; }
    std::vector<ui::Control*> controls() const override;

    // Fills the caption and the labels.
    void Form_Load();

    ui::Label* lblNameVersion = nullptr;
    ui::Label* lblCopyright = nullptr;
    ui::Label* lblDescription = nullptr;
    ui::Label* lblWebSite = nullptr;
    ui::CommandButton* cmdOK = nullptr;
    ui::CommandButton* cmdSysInfo = nullptr;

    void cmdOK_Click();
    void cmdSysInfo_Click();
    void lblWebSite_Click();

protected:
    // A click on the web-site label, or Enter on it, is its Click.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool mbIsWebSiteClick(const QEvent& event) const;
    // The maker's name and contact lines, one per CR.
    static std::string msCompanyNameContact();
};

// Shows the About box over owner and returns when it is closed (Help > About).
void gShowAbout(QWidget* owner);
