#include "services/frmAbout.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QIcon>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QVBoxLayout>

#include "BuildInfo.h"
#include "base/Trap.h"
#include "controls/SimpleControls.h"
#include "platform/Forms.h"
#include "platform/HostServices.h"
#include "services/modGeneral.h"

namespace {

constexpr const char* kModule = "frmAbout";

// The maker. The telephone and fax numbers are from the range kept free
// for fiction, and the mail domain is a reserved example domain, until the
// maker has real ones.
constexpr const char* kMakerName = "Marlo";
constexpr const char* kMakerTel = "+44 20 7946 0321";
constexpr const char* kMakerFax = "+44 20 7946 0322";
constexpr const char* kMakerEMail = "wavelark@marlo.example";
constexpr const char* kMakerWebSite = "https://github.com/marlo/wavelark";

constexpr int kIconSize = 48;

}  // namespace

frmAbout::frmAbout(QWidget* parent) : QDialog(parent)
{
    setObjectName(QString::fromLatin1(kModule));

    lblNameVersion = new ui::Label("lblNameVersion", QString(), this);
    QFont nameFont = lblNameVersion->font();
    nameFont.setBold(true);
    nameFont.setPointSizeF(nameFont.pointSizeF() * 1.25);
    lblNameVersion->setFont(nameFont);
    lblCopyright = new ui::Label("lblCopyright", QString(), this);
    lblDescription = new ui::Label("lblDescription", QString(), this);
    lblDescription->setTextInteractionFlags(Qt::TextSelectableByMouse);
    // The address as a link: Tab reaches it, and Enter, Space or a click
    // anywhere on the label opens it (eventFilter).
    lblWebSite = new ui::Label("lblWebSite", QString(), this);
    lblWebSite->setText(QStringLiteral("<a href=\"%1\">%1</a>").arg(kMakerWebSite));
    lblWebSite->setTextInteractionFlags(Qt::LinksAccessibleByKeyboard);
    lblWebSite->setCursor(Qt::PointingHandCursor);
    lblWebSite->setToolTip("Opens the web site in your browser");
    lblWebSite->installEventFilter(this);

    cmdOK = new ui::CommandButton("cmdOK", "OK", this);
    cmdOK->setDefault(true);
    cmdSysInfo = new ui::CommandButton("cmdSysInfo", "&System Info...", this);
    cmdOK->Click = [this] { cmdOK_Click(); };
    cmdSysInfo->Click = [this] { cmdSysInfo_Click(); };

    auto* icon = new QLabel(this);
    icon->setPixmap(QApplication::windowIcon().pixmap(kIconSize, kIconSize));
    icon->setAlignment(Qt::AlignTop);
    auto* texts = new QVBoxLayout;
    texts->addWidget(lblNameVersion);
    texts->addWidget(lblCopyright);
    texts->addSpacing(fontMetrics().height() / 2);
    texts->addWidget(lblDescription);
    texts->addWidget(lblWebSite);
    auto* top = new QHBoxLayout;
    top->addWidget(icon);
    top->addLayout(texts, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(cmdSysInfo);
    buttons->addWidget(cmdOK);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addLayout(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);

    ui::addOpenForm(this);
}

frmAbout::~frmAbout() { ui::removeOpenForm(this); }

std::vector<ui::Control*> frmAbout::controls() const
{
    return {&lblNameVersion->control(), &lblCopyright->control(), &lblDescription->control(),
            &lblWebSite->control(),     &cmdOK->control(),        &cmdSysInfo->control()};
}

void frmAbout::Form_Load()
{
    rt::Trap trap(kModule, "Form_Load");
    trap.step([&] { setWindowTitle(QStringLiteral("About '%1'").arg(buildinfo::kProductName)); });
    trap.step([&] { lblNameVersion->setText(QString::fromStdString(gsProgNameVersion)); });
    trap.step([&] {
        lblCopyright->setText(QStringLiteral("(c) %1").arg(buildinfo::kLegalCopyright));
    });
    trap.step([&] {
        lblDescription->setText(QString::fromStdString(msCompanyNameContact()).replace('\r', '\n'));
    });
}

std::string frmAbout::msCompanyNameContact()
{
    return std::string(kMakerName) + "\rTel: " + kMakerTel + "\rFax: " + kMakerFax +
           "\rEMail: " + kMakerEMail + "\rWeb Site: " + kMakerWebSite;
}

void frmAbout::cmdOK_Click() { accept(); }

void frmAbout::cmdSysInfo_Click()
{
    rt::Trap trap(kModule, "cmdSysInfo_Click");
    trap.step([&] {
        if (!host::startSystemInfo())
            host::msgBox("System Information Is Unavailable", host::kOkOnly, buildinfo::kProductName);
    });
}

void frmAbout::lblWebSite_Click()
{
    rt::Trap trap(kModule, "lblWebSite_Click");
    trap.step([&] {
        const std::int32_t result = host::openAddress(kMakerWebSite);
        if (result < host::kOpenDone)
            host::msgBox("Error " + std::to_string(result) + " has occurred with ShellExecute",
                         host::kExclamation, "frmAbout.lblWebSite_Click");
    });
}

bool frmAbout::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == lblWebSite && mbIsWebSiteClick(*event)) {
        lblWebSite_Click();
        return true;
    }
    return QDialog::eventFilter(watched, event);
}

// A left click released over the label, or Enter or Space while it has the
// focus: the label itself only opens a link that Tab has already selected
// inside it, and Enter would otherwise reach the dialog's OK.
bool frmAbout::mbIsWebSiteClick(const QEvent& event) const
{
    if (event.type() == QEvent::MouseButtonRelease) {
        const auto& mouse = static_cast<const QMouseEvent&>(event);
        return mouse.button() == Qt::LeftButton &&
               lblWebSite->rect().contains(mouse.position().toPoint());
    }
    if (event.type() == QEvent::KeyPress) {
        const int key = static_cast<const QKeyEvent&>(event).key();
        return key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Space;
    }
    return false;
}

void gShowAbout(QWidget* owner)
{
    rt::Trap trap(kModule, "gShowAbout");
    frmAbout form(owner);
    trap.step([&] { form.Form_Load(); });
    trap.step([&] { form.exec(); });
}
