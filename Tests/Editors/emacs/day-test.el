;;; day-test.el --- A day of work, and the windows that docs/editors.md shows  -*- lexical-binding: t; -*-

;;; Code:

(require 'test-support)
(require 'nebgit)

(defun day-show-status ()
  "Show the status, whichever buffer an answer made current."
  (set-buffer (get-buffer-create "*day*"))
  (setq default-directory test-folder)
  (nebgit-status))

(defun day-status ()
  "Show the status and return its text once it is up to date."
  (day-show-status)
  (test-wait (not nebgit-status--refreshing))
  (nebgit-status-refresh)
  (test-wait (not nebgit-status--refreshing))
  (buffer-substring-no-properties (point-min) (point-max)))

(defun day-until (text)
  "Wait until the status contains TEXT, and go to its line."
  (day-show-status)
  (test-wait (string-match-p (regexp-quote text) (buffer-string)))
  (goto-char (point-min))
  (search-forward text)
  (beginning-of-line))

(defun day-stage (text)
  "Stage the file on the line with TEXT."
  (day-until text)
  (nebgit-stage)
  (day-until "Staged changes (1)"))

(defun day-finish-commit (text)
  "Commit with the message in the current buffer, TEXT, and wait until its buffer is gone."
  (let ((message (current-buffer)))
    (nebgit-commit-finish)
    (test-wait (not (buffer-live-p message))))
  (should (equal (test-git "log" "-1" "--format=%s") text)))

(defun day-commit (text)
  "Commit what is staged with the message TEXT, through the buffer for it."
  (nebgit-commit)
  (insert text)
  (day-finish-commit text))

(defun day-edit (name line text)
  "Insert TEXT before LINE of the file NAME, without saving; return when it is marked."
  (find-file (expand-file-name name test-folder))
  (nebgit-changes-mode 1)
  (test-wait (and nebgit-changes--base nebgit-changes--tick))
  (goto-char (point-min))
  (forward-line (1- line))
  (insert text "\n")
  (forward-line -1)
  (nebgit-changes--compare (current-buffer))
  (test-wait (eql nebgit-changes--tick (buffer-chars-modified-tick))))

(defun day-create-large-repository (folder)
  "Create the repository with 100,000 commits and 5 changed files in FOLDER."
  (setq test-folder (expand-file-name "large/" folder))
  (should (eql 0 (call-process (expand-file-name "../large_repository.sh"
                                                 (getenv "NEBGIT_TESTS_FOLDER"))
                               nil nil nil test-folder)))
  (setq default-directory test-folder))

(defun day-clone (folder)
  "Commit a file, make a bare repository in FOLDER, and clone it with the command of Emacs."
  (apply #'test-commit-file "main.c" "Begin" (mapcar #'number-to-string (number-sequence 1 20)))
  (test-git "clone" "-q" "--bare" "." (expand-file-name "shared.git" folder))
  (nebgit-clone (expand-file-name "shared.git" folder) (expand-file-name "work" folder))
  (setq test-folder (expand-file-name "work/" folder))
  (test-wait (get-buffer (nebgit--status-name test-folder)))
  (setq default-directory test-folder))

(defun day-commit-hunks ()
  "Stage one of two hunks of a buffer that is not saved, commit and amend."
  (day-edit "main.c" 1 "first")
  (day-edit "main.c" 21 "last")
  (should (equal (nebgit-changes-counts) '(2 0 0)))
  (nebgit-hunk-stage)
  (test-wait (equal (test-git "diff" "--cached" "--numstat") "1\t0\tmain.c"))
  (day-commit "Add last")
  (should (string-match-p "^\\+last$" (test-git "show")))
  (find-file (expand-file-name "main.c" test-folder))
  (let ((inhibit-message t)) (save-buffer))
  (day-stage "modified   main.c")
  (nebgit-commit-amend)
  (test-wait (> (buffer-size) 0))
  (erase-buffer)
  (insert "Add first and last")
  (day-finish-commit "Add first and last")
  (should (equal (test-git "rev-list" "--count" "origin/main..HEAD") "1")))

(defun day-merge-with-conflict ()
  "Change the same line on two branches, merge, resolve and continue."
  (day-status)
  (nebgit-create-branch "topic")
  (day-until "Branch:   topic")
  (test-write "main.c" "theirs")
  (day-status)
  (day-stage "modified   main.c")
  (day-commit "Theirs")
  (cl-letf (((symbol-function 'completing-read) (lambda (&rest _) "main")))
    (day-status)
    (nebgit-switch)
    (day-until "Branch:   main"))
  (test-commit-file "main.c" "Ours" "ours")
  (cl-letf (((symbol-function 'completing-read) (lambda (&rest _) "topic")))
    (day-status)
    (nebgit-merge)
    (day-until "both modified main.c"))
  (test-write "main.c" "both")
  (nebgit-stage)
  (test-wait (not (string-match-p "Conflicts" (buffer-string))))
  (nebgit-continue)
  (test-wait (equal (test-git "log" "-1" "--format=%s") "Merge branch 'topic'"))
  (should (equal (test-read "main.c") "both\n")))

(defun day-push-and-stash (folder)
  "Push to the bare repository in FOLDER; stash a change and pop it."
  (day-status)
  (nebgit-push)
  (let ((head (test-git "rev-parse" "HEAD")))
    (test-wait (equal head (test-git (concat "--git-dir=" folder "shared.git")
                                     "rev-parse" "main"))))
  (test-write "main.c" "later")
  (day-until "Upstream: origin/main")
  (nebgit-stash-push "later")
  (day-until "stash@{0}  On main: later")
  (should (equal (test-read "main.c") "both\n"))
  (nebgit-stash-pop)
  (test-wait (not (string-match-p "Stashes" (buffer-string))))
  (should (equal (test-read "main.c") "later\n")))

(defun day-work (folder)
  "Clone the repository `test-folder' into FOLDER, commit, merge, stash and push."
  (day-clone folder)
  (day-commit-hunks)
  (day-merge-with-conflict)
  (day-push-and-stash folder))

(ert-deftest day-of-work-succeeds ()
  (test-with-folder
    (save-window-excursion
      (test-git "init" "-q")
      (day-work folder))))

;;; Large history

(defun day-shown-p (mode text)
  "Return the buffer in MODE that contains TEXT, or nil."
  (cl-find-if (lambda (buffer)
                (with-current-buffer buffer
                  (and (derived-mode-p mode) (string-match-p text (buffer-string)))))
              (buffer-list)))

(defun day-scroll-log ()
  "Show the log, and scroll through some pages."
  (nebgit-log)
  (test-wait (string-match-p "Change 99950" (buffer-string)))
  (should (< (count-lines (point-min) (point-max)) 2000))
  (test-wait (progn
               (goto-char (point-max))
               (nebgit-log-more)
               (> (count-lines (point-min) (point-max)) 2600)))
  (goto-char (point-min))
  (search-forward "Change 97500")
  (nebgit-log-show)
  (test-wait (day-shown-p 'nebgit-revision-mode "^\\+97500$")))

(ert-deftest day-in-a-large-history-succeeds ()
  (test-with-folder
    (save-window-excursion
      (day-create-large-repository folder)
      (day-work folder)
      (day-scroll-log)
      (find-file (expand-file-name "history/0/1" test-folder))
      (nebgit-blame)
      (test-wait (day-shown-p 'nebgit-blame-mode "Ann Example +│"))
      (test-write "d000/f000003" "changed")
      (day-stage "modified   d000/f000003")
      (day-commit "Change a file")
      (should (equal (test-git "show" "--format=" "--name-only") "d000/f000003")))))

;;; Windows in the documentation

(defconst day-page (expand-file-name "../../../docs/editors.md" (getenv "NEBGIT_TESTS_FOLDER"))
  "The page that shows the windows.")

(defun day-check-screen (name text)
  "Compare TEXT with the window NAME of the page, or write it there.
The environment variable NEB_WRITE_EDITORS_PAGE=1 means to write."
  (with-temp-buffer
    (insert-file-contents day-page)
    (search-forward (format "<!-- emacs: %s -->\n```text\n" name))
    (let ((begin (point)) (text (concat (string-trim-right text) "\n")))
      (search-forward "```\n")
      (goto-char (match-beginning 0))
      (if (not (equal (getenv "NEB_WRITE_EDITORS_PAGE") "1"))
          (should (equal (buffer-substring begin (point)) text))
        (delete-region begin (point))
        (insert text)
        (write-region nil nil day-page nil 'silent)))))

(defun day-demo ()
  "Make the repository that the windows show."
  (test-git "init" "-q")
  (test-commit-file "main.c" "Begin" "int main() {" "  return 0;" "}")
  (test-git "tag" "v1.0")
  (test-commit-file "notes.txt" "Add notes" "notes")
  (test-git "checkout" "-q" "-b" "topic" "HEAD^")
  (test-commit-file "topic.c" "Add a topic" "int topic;")
  (test-git "checkout" "-q" "main")
  (test-git "merge" "-q" "-m" "Merge the topic" "topic"))

(ert-deftest day-page-shows-the-status ()
  (test-with-folder
    (day-demo)
    (test-write "main.c" "int main() {" "  return 1;" "}")
    (test-git "mv" "notes.txt" "docs.txt")
    (test-write "new.txt" "x")
    (save-window-excursion
      (day-status)
      (day-until "modified   main.c")
      (nebgit-status-toggle-diff)
      (test-wait (string-match-p "\\+  return 1" (buffer-string)))
      (day-check-screen "status" (buffer-substring-no-properties (point-min) (point-max))))))

(ert-deftest day-page-shows-the-log ()
  (test-with-folder
    (day-demo)
    (save-window-excursion
      (nebgit-log)
      (test-wait (string-match-p "Begin" (buffer-string)))
      (day-check-screen "log" (buffer-substring-no-properties (point-min) (point-max))))))

(ert-deftest day-page-lists-all-keys ()
  (let (missing)
    (with-temp-buffer
      (insert-file-contents day-page)
      (dolist (map (list nebgit-status-mode-map nebgit-log-mode-map nebgit-blame-mode-map
                         nebgit-revision-mode-map nebgit-commit-mode-map))
        (map-keymap
         (lambda (event binding)
           (when (and (symbolp binding) (string-prefix-p "nebgit-" (symbol-name binding)))
             (goto-char (point-min))
             (unless (search-forward (format "`%s`" (key-description (vector event))) nil t)
               (push binding missing))))
         map)))
    (should-not missing)))

(provide 'day-test)
;;; day-test.el ends here
