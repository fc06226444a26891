;;; vc-test.el --- Tests of the VC backend  -*- lexical-binding: t; -*-

;;; Code:

(require 'test-support)
(require 'vc-nebgit)
(require 'vc-dir)

(defmacro test-with-vc (&rest body)
  "Run BODY in a new repository, in which VC uses NEBGit only."
  (declare (indent 0))
  `(test-with-repository
     (let ((vc-handled-backends '(NEBGit))
           (vc-suppress-confirm t))
       (vc-file-clearprops (expand-file-name "a.txt" folder))
       (save-window-excursion ,@body))))

(defun test-state (name)
  "Return the state of the file NAME as the backend reports it."
  (vc-nebgit-state (expand-file-name name test-folder)))

(ert-deftest vc-reports-states ()
  (test-with-vc
    (test-write "a.txt" "changed")
    (test-write "new.txt" "x")
    (test-write "added.txt" "x")
    (test-git "add" "added.txt")
    (test-write ".git/info/exclude" "ignored.txt")
    (test-write "ignored.txt" "x")
    (test-write "folder/in.txt" "x")
    (should (equal (mapcar #'test-state '("a.txt" "b.txt" "new.txt" "added.txt" "ignored.txt"
                                          "folder/in.txt" "none.txt"))
                   '(edited up-to-date unregistered added ignored unregistered unregistered)))
    (delete-file "b.txt")
    (should (eq (test-state "b.txt") 'missing))
    (test-git "rm" "-q" "--cached" "b.txt")
    (should (eq (test-state "b.txt") 'removed))
    (should (vc-nebgit-registered (expand-file-name "a.txt" folder)))
    (should-not (vc-nebgit-registered (expand-file-name "new.txt" folder)))
    (should-not (vc-nebgit-registered "/"))))

(ert-deftest vc-finds-its-backend-and-mode-line ()
  (test-with-vc
    (find-file "a.txt")
    (should (eq (vc-backend buffer-file-name) 'NEBGit))
    (should (equal (substring-no-properties vc-mode) " NEBGit-main"))
    (should (equal (vc-working-revision buffer-file-name) (test-git "rev-parse" "HEAD")))))

(ert-deftest vc-mode-line-follows-changes ()
  (test-with-vc
    (let ((b (find-file "b.txt")))
      (find-file "a.txt")
      (cl-flet ((wait-for (expected)
                  (test-wait (equal (list (buffer-local-value 'vc-mode b) vc-mode) expected))))
        (wait-for '(" NEBGit-main" " NEBGit-main"))
        (insert "changed\n")
        (save-buffer)
        (wait-for '(" NEBGit-main" " NEBGit:main"))
        (nebgit-act 'stage (list :files '("a.txt")) "stage")
        (should-not (stringp (test-outcome (nebgit-request 'commit folder :Message "Change"))))
        (wait-for '(" NEBGit-main" " NEBGit-main"))
        (should (equal (vc-working-revision (expand-file-name "b.txt"))
                       (test-git "rev-parse" "HEAD")))
        (nebgit-create-branch "topic")
        (wait-for '(" NEBGit-topic" " NEBGit-topic"))
        (test-git "rm" "-q" "--cached" "a.txt")
        (run-hook-with-args 'nebgit-changed-hook folder)
        (wait-for '(" NEBGit-topic" " NEBGit:topic"))
        (test-git "commit" "-q" "-m" "Forget")
        (run-hook-with-args 'nebgit-changed-hook folder '("head"))
        (wait-for '(" NEBGit-topic" nil))))))

(ert-deftest vc-registers-commits-renames-and-deletes ()
  (test-with-vc
    (test-write "new.txt" "x")
    (let ((new (expand-file-name "new.txt" folder)))
      (vc-nebgit-register (list new))
      (should (eq (test-state "new.txt") 'added))
      (vc-nebgit-unregister new)
      (should (eq (test-state "new.txt") 'unregistered))
      (vc-nebgit-register (list new))
      (test-write "a.txt" "changed")
      (vc-nebgit-checkin (list new) "Add new\n\nBody\n")
      (should (equal (test-git "log" "-1" "--format=%B") "Add new\n\nBody\n"))
      (should (eq (test-state "a.txt") 'edited))
      (vc-rename-file new (expand-file-name "moved.txt" folder))
      (should (equal (test-git "diff" "--cached" "--name-status" "-M") "R100\tnew.txt\tmoved.txt"))
      (vc-nebgit-checkin (list folder) "All")
      (should (equal (test-git "status" "--porcelain") ""))
      (vc-nebgit-delete-file (expand-file-name "moved.txt" folder))
      (should (equal (test-git "status" "--porcelain") "D  moved.txt")))))

(ert-deftest vc-commits-what-the-headers-say ()
  (test-with-vc
    (cl-flet ((commit (text message)
                (test-write "a.txt" text)
                (vc-nebgit-checkin (list (expand-file-name "a.txt" folder)) message)
                (test-git "log" "-1" "--format=%an: %B")))
      (should (equal (commit "1" "Summary: Change a\n\nBody\n")
                     "Ann Example: Change a\n\nBody\n"))
      (should (equal (commit "2" "Summary: Change a\nAuthor: Bob <bob@example.org>\n")
                     "Bob: Change a\n"))
      (should (equal (commit "3" "editor: change a\n") "Ann Example: editor: change a\n"))
      (should (equal (commit "4" "Summary: New\nSign-Off: yes\nAmend: yes\n")
                     (concat "Ann Example: New\n\n"
                             "Signed-off-by: Ann Example <ann@example.com>\n")))
      (should (equal (test-git "rev-list" "--count" "HEAD") "5")))))

(ert-deftest vc-commits-through-the-window-for-the-message ()
  (test-with-vc
    (find-file "a.txt")
    (insert "new ")
    (let ((inhibit-message t)) (save-buffer))
    (vc-next-action nil)
    (should (derived-mode-p 'log-edit-mode))
    (insert "Change a")
    (log-edit-done)
    (test-wait (equal (test-git "log" "-1" "--format=%B") "Change a\n"))))

(ert-deftest vc-reverts-and-checks-out ()
  (test-with-vc
    (let ((file (expand-file-name "a.txt" folder)))
      (test-write "a.txt" "changed")
      (test-git "add" "a.txt")
      (vc-nebgit-revert file)
      (should (equal (test-read "a.txt") "one\ntwo\nthree\n"))
      (test-commit-file "a.txt" "Change" "2")
      (vc-nebgit-checkout file "HEAD~2")
      (should (equal (test-read "a.txt") "one\ntwo\nthree\n")))))

(ert-deftest vc-shows-diffs-and-revisions ()
  (test-with-vc
    (find-file "a.txt")
    (should (eql 0 (vc-nebgit-diff (list buffer-file-name))))
    (goto-char (point-max))
    (insert "four\n")
    (let ((inhibit-message t)) (save-buffer))
    (vc-diff nil t)
    (with-current-buffer "*vc-diff*"
      (should (string-match-p "^\\+four$" (buffer-string)))
      (should (derived-mode-p 'diff-mode)))
    (with-current-buffer (vc-find-revision (expand-file-name "a.txt" folder) "HEAD~1")
      (should (equal (buffer-string) "one\ntwo\nthree\n"))
      (kill-buffer))))

(ert-deftest vc-shows-logs ()
  (test-with-vc
    (test-commit-file "a.txt" "Change\n\nWith a body." "2")
    (find-file "a.txt")
    (vc-print-log)
    (with-current-buffer "*vc-change-log*"
      (should (derived-mode-p 'vc-nebgit-log-view-mode))
      (should (string-match-p "\\`commit [0-9a-f]\\{40\\}\nAuthor: Ann Example <ann@example.com>\n"
                              (buffer-string)))
      (should (string-match-p "\n    Change\n\n    With a body\\.\n" (buffer-string)))
      (should-not (string-match-p "Second" (buffer-string)))
      (should (bobp))
      (should (equal (log-view-current-tag) (test-git "rev-parse" "HEAD"))))
    (find-file "a.txt")
    (vc-print-root-log)
    (with-current-buffer "*vc-change-log*"
      (should (string-match-p "\\`[0-9a-f]\\{10\\} 2020-09-13 Ann Example  Change\n" (buffer-string)))
      (should (bobp))
      (should (equal (log-view-current-tag) (test-git "rev-parse" "--short=10" "HEAD"))))))

(ert-deftest vc-goes-through-revisions ()
  (test-with-vc
    (test-commit-file "a.txt" "Change" "2")
    (test-git "tag" "v1")
    (let ((file (expand-file-name "a.txt" folder))
          (first (test-git "rev-parse" "HEAD~2"))
          (last (test-git "rev-parse" "HEAD")))
      (should (equal (vc-nebgit-previous-revision file last) first))
      (should (equal (vc-nebgit-next-revision file first) last))
      (should-not (vc-nebgit-previous-revision file first))
      (should-not (vc-nebgit-next-revision file last))
      (should (equal (vc-nebgit-revision-completion-table (list file)) '("HEAD" "main" "v1")))
      (should (string-prefix-p (vc-nebgit-mergebase "HEAD~1") (test-git "rev-parse" "HEAD~1"))))))

(ert-deftest vc-annotates ()
  (test-with-vc
    (test-commit-file "a.txt" "Change" "one" "2" "three")
    (find-file "a.txt")
    (vc-annotate buffer-file-name "HEAD" nil nil nil nil)
    (with-current-buffer (test-wait (cl-find-if (lambda (buffer)
                                                  (with-current-buffer buffer
                                                    (derived-mode-p 'vc-annotate-mode)))
                                                (buffer-list)))
      (goto-char (point-min))
      (should (looking-at-p "[0-9a-f]\\{8\\} 2020-09-13 Ann Example +│ one$"))
      (forward-line 1)
      (should (equal (car (vc-nebgit-annotate-extract-revision-at-line))
                     (test-git "rev-parse" "HEAD")))
      (should (< (abs (- (vc-nebgit-annotate-time) (/ 1600000000 86400.0))) 1))
      (kill-buffer))))

(ert-deftest vc-dir-lists-files ()
  (test-with-vc
    (test-write "a.txt" "changed")
    (test-write "new.txt" "x")
    (vc-dir folder 'NEBGit)
    (test-wait (string-match-p "edited +a\\.txt" (buffer-string)))
    (should (string-match-p "Branch     : main" (buffer-string)))
    (should (string-match-p "unregistered +new\\.txt" (buffer-string)))
    (kill-buffer)))

(ert-deftest vc-lists-conflicts-and-incoming-commits ()
  (test-with-vc
    (test-git "branch" "topic")
    (test-commit-file "a.txt" "Ours" "ours")
    (test-git "checkout" "-q" "topic")
    (test-commit-file "a.txt" "Theirs" "theirs")
    (test-git "branch" "-q" "--set-upstream-to=main")
    (vc-nebgit-log-outgoing "*vc-out*" nil)
    (vc-nebgit-log-incoming "*vc-in*" nil)
    (should (string-match-p "\\`[0-9a-f]\\{10\\} .*Theirs\n\\'"
                            (with-current-buffer "*vc-out*" (buffer-string))))
    (should (string-match-p "\\`[0-9a-f]\\{10\\} .*Ours\n\\'"
                            (with-current-buffer "*vc-in*" (buffer-string))))
    (should (equal (test-outcome (nebgit-request 'integrate folder :destination "main"))
                   "conflict"))
    (let ((file (expand-file-name "a.txt" folder)))
      (should (equal (vc-nebgit-conflicted-files folder) (list file)))
      (should (eq (test-state "a.txt") 'conflict))
      (vc-nebgit-mark-resolved (list file))
      (should-not (vc-nebgit-conflicted-files folder)))))

(ert-deftest vc-creates-repositories-tags-and-branches ()
  (test-with-vc
    (vc-nebgit-create-tag folder "v1" nil)
    (should (equal (test-git "tag") "v1"))
    (vc-nebgit-create-tag folder "topic" t)
    (should (equal (test-git "symbolic-ref" "--short" "HEAD") "topic"))
    (vc-nebgit-retrieve-tag folder "main" nil)
    (should (equal (test-git "symbolic-ref" "--short" "HEAD") "main"))
    (should-error (vc-nebgit-retrieve-tag folder "no-such-branch" nil))
    (make-directory "sub")
    (let ((default-directory (expand-file-name "sub/" folder)))
      (vc-nebgit-create-repo))
    (should (file-directory-p (expand-file-name "sub/.git" folder)))))

(ert-deftest vc-does-not-hang ()
  (test-with-vc
    (test-write-program ".git/hooks/pre-commit" "#!/bin/sh" "sleep 100")
    (test-write "a.txt" "changed")
    (let ((vc-nebgit-commit-limit 0.3))
      (should-error (vc-nebgit-checkin (list (expand-file-name "a.txt" folder)) "Never")))))

(provide 'vc-test)
;;; vc-test.el ends here
