;;; test-support.el --- Repositories and waiting for the tests of Emacs  -*- lexical-binding: t; -*-

;;; Commentary:

;; The tests use the real server, whose program the environment variable NEBSC names, and the real
;; git on repositories in a temporary folder.

;;; Code:

(require 'ert)
(require 'cl-lib)
(require 'nebgit-request)

(defvar test-limit (string-to-number (or (getenv "NEBGIT_TEST_LIMIT") "60"))
  "Seconds after which a test that waits fails.")

(defvar test-folder nil
  "Folder of the running test, in which git runs.")

(defun test-prepare ()
  "Keep git from reading the configuration of the user, and give it fixed names and times."
  (let ((home (make-temp-file "nebgit-home" t)))
    (add-hook 'kill-emacs-hook (lambda () (delete-directory home t)))
    (cl-loop for (name value) in
             `(("HOME" ,home) ("XDG_CONFIG_HOME" ,home) ("GIT_CONFIG_NOSYSTEM" "1")
               ("GIT_CONFIG_GLOBAL" nil) ("GIT_TERMINAL_PROMPT" "0")
               ("GIT_AUTHOR_NAME" "Ann Example") ("GIT_AUTHOR_EMAIL" "ann@example.com")
               ("GIT_COMMITTER_NAME" "Ann Example") ("GIT_COMMITTER_EMAIL" "ann@example.com")
               ("GIT_AUTHOR_DATE" "1600000000 +0000") ("GIT_COMMITTER_DATE" "1600000000 +0000")
               ("LC_ALL" "C.UTF-8"))
             do (setenv name value))
    (with-temp-file (expand-file-name ".gitconfig" home)
      (insert "[init]\n\tdefaultBranch = main\n[protocol \"file\"]\n\tallow = always\n"))
    ;; A replaced function would otherwise be compiled, in a folder that may be gone.
    (defvar comp-enable-subr-trampolines)
    (defvar native-comp-enable-subr-trampolines)
    (setq comp-enable-subr-trampolines nil
          native-comp-enable-subr-trampolines nil
          nebgit-program (getenv "NEBSC"))))

(defun test-git (&rest arguments)
  "Run git with ARGUMENTS in `test-folder'; return its output without the last newline."
  (with-temp-buffer
    (let* ((default-directory test-folder)
           (coding-system-for-read 'utf-8-unix)
           (status (apply #'call-process "git" nil t nil arguments)))
      (unless (eql status 0)
        (error "Command git %s: %s" arguments (buffer-string)))
      (string-trim-right (buffer-string) "\n"))))

(defun test-write (name &rest lines)
  "Write LINES, each with a newline, to the file NAME."
  (let ((file (expand-file-name name test-folder))
        (coding-system-for-write 'utf-8-unix))
    (make-directory (file-name-directory file) t)
    (write-region (mapconcat (lambda (line) (concat line "\n")) lines "") nil file nil 'silent)))

(defun test-write-program (name &rest lines)
  "Write LINES to the file NAME, which can be run then."
  (apply #'test-write name lines)
  (set-file-modes (expand-file-name name test-folder) #o755))

(defun test-read (name)
  "Return the content of the file NAME."
  (with-temp-buffer
    (insert-file-contents (expand-file-name name test-folder))
    (buffer-string)))

(defun test-commit-file (file message &rest lines)
  "Write LINES to FILE and commit it with MESSAGE."
  (apply #'test-write file lines)
  (test-git "add" "--" file)
  (test-git "commit" "-q" "-m" message))

(defmacro test-with-folder (&rest body)
  "Run BODY in a new temporary folder."
  (declare (indent 0))
  `(let* ((folder (file-name-as-directory (file-truename (make-temp-file "nebgit" t))))
          (default-directory folder)
          (test-folder folder))
     (unwind-protect
         (progn ,@body)
       (test-kill-buffers folder)
       (test-delete folder))))

(defun test-delete (folder)
  "Delete FOLDER, in which a git may be about to end; fail after `test-limit' seconds."
  (let ((end (+ (float-time) test-limit)))
    (while (file-exists-p folder)
      (condition-case problem
          (delete-directory folder t)
        (file-error (when (> (float-time) end)
                      (signal (car problem) (cdr problem)))
                    (accept-process-output nil 0.02))))))

(defmacro test-with-repository (&rest body)
  "Run BODY in a new repository with the commits \"First\" and \"Second\"."
  (declare (indent 0))
  `(test-with-folder
     (test-git "init" "-q")
     (test-commit-file "a.txt" "First" "one" "two" "three")
     (test-commit-file "b.txt" "Second" "b")
     ,@body))

(defun test-kill-buffers (folder)
  "Kill the buffers of files and windows of NEBGit below FOLDER."
  (dolist (buffer (buffer-list))
    (when (and (buffer-live-p buffer)
               (string-prefix-p folder (expand-file-name
                                        (buffer-local-value 'default-directory buffer)))
               (or (buffer-file-name buffer) (string-prefix-p "*nebgit" (buffer-name buffer))
                   (string-prefix-p "*vc" (buffer-name buffer))))
      (with-current-buffer buffer
        (set-buffer-modified-p nil)
        (let ((kill-buffer-query-functions nil))
          (kill-buffer))))))

(defmacro test-wait (form)
  "Wait until FORM returns non-nil, and return that; fail after `test-limit' seconds."
  `(let ((end (+ (float-time) test-limit)) value)
     (while (and (not (setq value ,form)) (< (float-time) end))
       (accept-process-output nil 0.02))
     (unless value
       (ert-fail (list "Waited in vain" ',form :buffer (buffer-substring-no-properties (point-min) (point-max)))))
     value))

(defun test-outcome (request)
  "Carry out REQUEST; return its records, or the class of its error as a string."
  (let (done value)
    (nebgit-perform request
                    :success (lambda (records _) (setq done t value records))
                    :failure (lambda (problem _)
                               (setq done t value (or (nebgit-error-class problem)
                                                      (plist-get problem :message)))))
    (test-wait done)
    value))

(defun test-at-terminal (dialogue &rest arguments)
  "Run Emacs with ARGUMENTS at a terminal that answers as DIALOGUE says.
Return its status, see at_terminal.py, and what the terminal shows."
  (with-temp-buffer
    (let ((status (apply #'call-process "python3" nil t nil
                         (expand-file-name "../../nebsc/Credentials/at_terminal.py"
                                           (getenv "NEBGIT_TESTS_FOLDER"))
                         (append dialogue
                                 (list "--" "env" "TERM=xterm"
                                       (expand-file-name invocation-name invocation-directory)
                                       "-nw" "-Q" "-L" (getenv "NEBGIT_EMACS_FOLDER") "-l" "nebgit")
                                 arguments))))
      (list status (buffer-string)))))

(defvar test--messages nil
  "Messages that were shown, last one first.")

(define-advice message (:filter-return (text) test-note)
  "Keep TEXT, which a batch Emacs does not keep in a buffer."
  (when text (push text test--messages))
  text)

(defun test-messages ()
  "Return the messages that were shown."
  (string-join (reverse test--messages) "\n"))

(provide 'test-support)
;;; test-support.el ends here
