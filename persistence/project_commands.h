#pragma once

#include <QObject>

namespace lumiquilt {

class FormMontage;
class FormMontagePicture;

/// "Save a Project", a montage window's "Save project" and "Load a Project" (also
/// from a "project ..." entry of the recent list). Lives as a child of the main
/// window; `of` finds or makes it.
class ProjectCommands : public QObject {
    Q_OBJECT
  public:
    static ProjectCommands& of(FormMontage& form);

    /// Saves the main montage and the run's report; the montage must be on view.
    void mnuSave_Click();
    /// Saves the report of the window it is chosen from (a method window's own, when
    /// its caption is a method window's) beside the main montage's picture.
    void mnuSaveProject_Click(const FormMontagePicture* window);
    /// Opens the project that the file field names as a recent item, or one chosen
    /// in the dialog: restores the choices, reloads the series through Create Image
    /// without its block loop, and shows the stored montage and report.
    void mnuOpenProject_Click();

    /// The "Save project" entry of a new montage or method window.
    void connectMontageWindow(FormMontagePicture* window);

  private:
    explicit ProjectCommands(FormMontage& form);
    void saveProject(const FormMontagePicture* from);
    /// Open's last steps: the montage window and the used-blocks window.
    void showStoredMontage(const std::string& projectName);

    FormMontage& f;
};

}  // namespace lumiquilt
